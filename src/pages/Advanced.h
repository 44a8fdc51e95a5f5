// panelkit pages: the Advanced page: remote access, logs, passwords, erasing, the configuration listing and its restore.
#pragma once

#include "page/Page.h"

#include <cstdint>
#include <string>

namespace panelkit::pages {

/// "/settings/advanced": administrative switches and actions, one tab each.
page::Page Advanced();
/// A partition's line from its file system's counts: "LABEL (%.1fGB free, %i%% used)"; "unknown" without blocks.
std::string PartitionUsage(const std::string& label, std::uint64_t blocks, std::uint64_t freeBlocks,
                           std::uint64_t blockSize);
/// The line of the partition holding the folder; "unknown" when it cannot be read or, on the device, is not ext.
std::string PartitionLine(const std::string& label, const std::string& folder);

}  // namespace panelkit::pages

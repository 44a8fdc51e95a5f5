// panelkit pages: the General page: identity, device name and live system status.
#pragma once

#include "page/Page.h"

#include <string>

namespace panelkit::pages {

/// "/settings/general" (also the configuration root): device name, language and the system's status.
page::Page General();
/// The board temperature text for a hardware-monitor reading in millidegrees.
std::string BoardTemperature(const std::string& reading);

}  // namespace panelkit::pages

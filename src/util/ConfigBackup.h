// panelkit util: the configuration listing of the whole store, and a listing read back and restored.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace panelkit::util {

/// The store as text, one line per key in byte order: a double quote, the key, `","`, the value, `", ` and the
/// type letter ("i" int, "f" float, "s" any other), then a newline. Keys hold no double quote; values may.
class ConfigBackup {
public:
    /// One line of a listing.
    struct Entry {
        std::string key;
        std::string value;
        /// 'i', 'f' or 's'.
        char type = 's';
    };

    /// The listing of every key of the store; a key that cannot be read is logged and ends the listing there.
    static std::string Listing();
    /// The line of one entry, its newline included.
    static std::string Line(const Entry& entry);
    /// Reads a listing into entries, checking every line (blank lines aside): false at the first broken one,
    /// with "Line N: " and the reason in error.
    static bool Parse(const std::string& text, std::vector<Entry>& entries, std::string& error);
    /// Writes the entries whose key is missing or holds another value or type, all under one hold of the store's
    /// lock, stopping at the first failed write; false then. `changed` counts the keys written.
    static bool Restore(const std::vector<Entry>& entries, std::size_t& changed);

    ConfigBackup() = delete;
};

}  // namespace panelkit::util

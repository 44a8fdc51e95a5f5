// panelkit web layer: named URL patterns of one application, for building links.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace panelkit::web {

/// Names mapped to patterns with {1}, {2}, ... placeholders, a default pattern for the
/// application itself, and the root that the topmost application puts before every URL.
class Mapper {
public:
    /// Maps a name to a pattern ("reboot" → "/reboot", "about2" → "/about/{1}/{2}").
    void assign(const std::string& name, const std::string& pattern);
    /// Sets the pattern of the application itself (the empty name).
    void assign(const std::string& pattern);
    /// Sets the root put before the URLs of the topmost application ("/config").
    void root(const std::string& root) { root_ = root; }
    /// The root put before every URL.
    const std::string& root() const { return root_; }
    /// The pattern of a name, or nullptr.
    const std::string* find(const std::string& name) const;
    /// Replaces {1}, {2}, ... with the parameters; throws when a parameter is missing.
    static std::string Expand(const std::string& pattern, const std::vector<std::string>& params);

private:
    std::map<std::string, std::string> patterns_;
    std::string root_;
};

}  // namespace panelkit::web

// panelkit web layer: escaping text for HTML.
#pragma once

#include <string>

namespace panelkit::web {

/// HTML text helpers.
class Html {
public:
    /// The text with &, <, >, " and ' replaced by entities.
    static std::string Escape(const std::string& text);
};

}  // namespace panelkit::web

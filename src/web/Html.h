// panelkit web layer: escaping text for HTML.
#pragma once

#include <iosfwd>
#include <string>

namespace panelkit::web {

/// HTML text helpers.
class Html {
public:
    /// Text to be written escaped: `out << Html::Escaped{text}` writes it with the entities
    /// of Escape, straight into the stream.
    struct Escaped {
        const std::string& text;
    };

    /// The text with &, <, >, " and ' replaced by entities.
    static std::string Escape(const std::string& text);
};

/// Writes the text with &, <, >, " and ' replaced by entities, in runs rather than by character.
std::ostream& operator<<(std::ostream& out, const Html::Escaped& escaped);

}  // namespace panelkit::web

// panelkit web layer: a text input whose whole value must match a Perl-style expression.
#pragma once

#include "web/widgets/Text.h"

#include "web/Pattern.h"

#include <optional>

namespace panelkit::web::widgets {

/// A text input checked against an expression (the whole value must match).
class RegexField : public Text {
public:
    RegexField() = default;
    /// A field checked against the expression.
    explicit RegexField(const std::string& expression) { regex(expression); }
    /// Replaces the expression.
    void regex(const std::string& expression);
    /// The expression's text.
    std::string regex() const { return pattern_ ? pattern_->expression() : std::string(); }

    bool validate() override;

private:
    std::optional<Pattern> pattern_;
};

}  // namespace panelkit::web::widgets

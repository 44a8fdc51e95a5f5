// panelkit web layer: a text input whose whole value must match a Perl-style expression.
#pragma once

#include "web/widgets/Text.h"

#include <Poco/RegularExpression.h>

#include <memory>

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
    const std::string& regex() const { return expression_; }

    bool validate() override;

private:
    std::string expression_;
    std::shared_ptr<const Poco::RegularExpression> compiled_;
};

}  // namespace panelkit::web::widgets

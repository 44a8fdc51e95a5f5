// panelkit web layer: a text input whose whole value must match a Perl-style expression.
#include "web/widgets/RegexField.h"

namespace panelkit::web::widgets {

void RegexField::regex(const std::string& expression)
{
    expression_ = expression;
    compiled_ = std::make_shared<const Poco::RegularExpression>("^(?:" + expression + ")$",
                                                                Poco::RegularExpression::RE_DOLLAR_ENDONLY);
}

bool RegexField::validate()
{
    if (!BaseWidget::validate())
        return false;
    valid(!compiled_ || compiled_->match(value()));
    return valid();
}

}  // namespace panelkit::web::widgets

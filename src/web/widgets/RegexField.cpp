// panelkit web layer: a text input whose whole value must match a Perl-style expression.
#include "web/widgets/RegexField.h"

namespace panelkit::web::widgets {

void RegexField::regex(const std::string& expression)
{
    pattern_.emplace(expression);
}

bool RegexField::validate()
{
    if (!BaseWidget::validate())
        return false;
    valid(!pattern_ || pattern_->matches(value()));
    return valid();
}

}  // namespace panelkit::web::widgets

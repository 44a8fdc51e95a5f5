// panelkit web layer: what every form widget has: name, id, label, help, attributes, states and its error.
#include "web/widgets/BaseWidget.h"

#include "web/Html.h"

namespace panelkit::web::widgets {

bool BaseWidget::validate()
{
    valid_ = !(nonEmpty_ && !set_);
    return valid_;
}

void BaseWidget::renderCommonAttributes(std::ostream& out) const
{
    if (!id_.empty())
        out << " id=\"" << Html::Escaped{id_} << "\"";
    if (!name_.empty())
        out << " name=\"" << Html::Escaped{name_} << "\"";
    if (disabled_)
        out << " disabled=\"disabled\"";
    if (readonly_)
        out << " readonly=\"readonly\"";
    if (!attributes_.empty())
        out << " " << attributes_;
}

}  // namespace panelkit::web::widgets

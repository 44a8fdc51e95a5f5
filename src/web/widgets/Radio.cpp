// panelkit web layer: a single choice shown as a set of radio buttons instead of a drop-down list.
#include "web/widgets/Radio.h"

#include "web/Html.h"

namespace panelkit::web::widgets {

void Radio::render_input(std::ostream& out) const
{
    out << "<div class=\"radio_select\"";
    if (!id().empty())
        out << " id=\"" << Html::Escaped{id()} << "\"";
    out << ">";
    for (std::size_t i = 0; i < options().size(); ++i) {
        out << "<label><input type=\"radio\"";
        if (!id().empty())
            out << " id=\"" << Html::Escaped{id() + "_" + std::to_string(i)} << "\"";
        out << " name=\"" << Html::Escaped{name()} << "\" value=\"" << Html::Escaped{options()[i].id} << "\"";
        if (static_cast<int>(i) == selected())
            out << " checked=\"checked\"";
        if (disabled())
            out << " disabled=\"disabled\"";
        if (!attributes_string().empty())
            out << " " << attributes_string();
        out << " /> " << Html::Escaped{options()[i].label} << "</label><br />";
    }
    out << "</div>";
}

}  // namespace panelkit::web::widgets

// panelkit web layer: a check box; absent from a post means unticked.
#include "web/widgets/Checkbox.h"

#include "web/Html.h"
#include "web/Request.h"

namespace panelkit::web::widgets {

void Checkbox::value(bool ticked)
{
    value_ = ticked;
    set(true);
}

void Checkbox::load(const Request& request)
{
    value_ = false;
    for (const auto& posted : request.postAll(name()))
        value_ = value_ || posted == identification_;
    set(true);
}

void Checkbox::render_input(std::ostream& out) const
{
    out << "<input type=\"checkbox\"";
    renderCommonAttributes(out);
    out << " value=\"" << Html::Escaped{identification_} << "\"";
    if (value_)
        out << " checked=\"checked\"";
    out << " />";
}

}  // namespace panelkit::web::widgets

// panelkit web layer: a submit button; pressed() tells which button sent the form.
#include "web/widgets/Submit.h"

#include "web/Html.h"
#include "web/Request.h"

namespace panelkit::web::widgets {

void Submit::load(const Request& request)
{
    pressed_ = request.posted(name());
    set(true);
}

void Submit::render_input(std::ostream& out) const
{
    out << "<input type=\"submit\"";
    renderCommonAttributes(out);
    out << " value=\"" << Html::Escaped{value_} << "\" />";
}

}  // namespace panelkit::web::widgets

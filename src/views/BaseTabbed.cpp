// panelkit views: the layout of pages with tabs (inputs without rows).
#include "views/BaseTabbed.h"

#include "web/widgets/BaseWidget.h"

namespace panelkit::views {

BaseTabbed::BaseTabbed(std::ostream& out, data::BaseTabbed& content, const web::Application& app)
    : Base(out, content, app), tabbed_(content)
{
}

void BaseTabbed::render_widget(const web::widgets::BaseWidget& widget)
{
    widget.render_input(out_);
    if (widget.valid())
        return;
    out_ << "<span class=\"cppcms_error_msg\">";
    Esc(widget.error_message());
    out_ << "</span>";
}

void BaseTabbed::render_scripts()
{
    Base::render_scripts();
    ScriptData("tabs")["selected"] = tabbed_.selected_tab;
}

}  // namespace panelkit::views

// panelkit views: the layout of pages with tabs (inputs without rows).
#include "views/BaseTabbed.h"

namespace panelkit::views {

BaseTabbed::BaseTabbed(std::ostream& out, data::BaseTabbed& content, const web::Application& app)
    : Base(out, content, app), tabbed_(content)
{
}

void BaseTabbed::render_widget(const web::widgets::BaseWidget& widget)
{
    render_input_and_error(widget);
}

void BaseTabbed::render_scripts()
{
    Base::render_scripts();
    ScriptData("tabs")["selected"] = tabbed_.selected_tab;
}

}  // namespace panelkit::views

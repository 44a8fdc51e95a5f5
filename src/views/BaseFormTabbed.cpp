// panelkit views: the layout of tabbed pages made of form rows.
#include "views/BaseFormTabbed.h"

namespace panelkit::views {

BaseFormTabbed::BaseFormTabbed(std::ostream& out, data::BaseTabbed& content, const web::Application& app)
    : BaseForm(out, content, app), tabbed_(content)
{
}

void BaseFormTabbed::render_scripts()
{
    BaseForm::render_scripts();
    ScriptData("tabs")["selected"] = tabbed_.selected_tab;
}

}  // namespace panelkit::views

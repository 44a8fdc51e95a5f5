// panelkit views: the page shown while the device reboots; it counts down and returns when the device answers.
#include "views/WaitReboot.h"

namespace panelkit::views {

WaitReboot::WaitReboot(std::ostream& out, page::Content& content, const web::Application& app)
    : BaseForm(out, content, app), page_(content)
{
}

void WaitReboot::render_scripts()
{
    BaseForm::render_scripts();
    ScriptData("rebootWaitSec") = kWaitSeconds;
    AddScript("/js/waitreboot.js");
}

void WaitReboot::render_content()
{
    // Outside "#content": the banner, content and footer fade out while this stays.
    out_ << "<div id=\"wait_reboot\"><div id=\"config_pane\" class=\"config_pane wait_reboot\"><h2 id=\"config_page_title\">";
    Esc(content_.title);
    out_ << "</h2>\n<form method=\"post\" action=\"\"><table class=\"form_table\">";
    render_form(*page_.forms.front());
    out_ << "</table></form>\n";
    for (const auto& [name, value] : page_.facts) {
        out_ << "<div id=\"";
        Esc(name);
        out_ << "\" class=\"hidden\">";
        Esc(value);
        out_ << "</div>";
    }
    out_ << "</div></div>\n";
}

}  // namespace panelkit::views

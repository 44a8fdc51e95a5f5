// panelkit views: the page shown while the device reboots; it counts down and returns when the device answers.
#include "views/WaitReboot.h"

namespace panelkit::views {

WaitReboot::WaitReboot(std::ostream& out, data::Reboot& content, const web::Application& app)
    : BaseForm(out, content, app), reboot_(content)
{
}

void WaitReboot::render_scripts()
{
    BaseForm::render_scripts();
    ScriptData("rebootWaitSec") = reboot_.wait_time;
    AddScript("/js/waitreboot.js");
}

void WaitReboot::render_content()
{
    // Outside "#content": the banner, content and footer fade out while this stays.
    out_ << "<div id=\"wait_reboot\"><div id=\"config_pane\" class=\"config_pane wait_reboot\"><h2 id=\"config_page_title\">";
    Esc(content_.title);
    out_ << "</h2>\n<form method=\"post\" action=\"\"><table class=\"form_table\">";
    render_form(reboot_.form);
    out_ << "</table></form>\n<div id=\"lan_ipaddr\" class=\"hidden\">";
    Esc(reboot_.current_address);
    out_ << "</div><div id=\"pardb_lan_ipaddr\" class=\"hidden\">";
    Esc(reboot_.lan_address);
    out_ << "</div></div></div>\n";
}

}  // namespace panelkit::views

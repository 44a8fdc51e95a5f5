// panelkit views: a page with a configuration tab (a form) and a status tab that its script fills.
#include "views/StatusPage.h"

namespace panelkit::views {

StatusPage::StatusPage(std::ostream& out, data::BaseTabbed& content, const web::Application& app,
                       const web::Form& form, const StatusPageParts& parts)
    : BaseFormTabbed(out, content, app), form_(form), parts_(parts)
{
}

void StatusPage::render_page()
{
    out_ << "<div id=\"tabcontainer\"><ul class=\"tabnav\"><li><a href=\"#config_tab\">Configuration</a></li>"
            "<li><a href=\"#status_tab\">Status</a></li></ul>\n<div id=\"config_tab\" class=\"tabdiv\">";
    render_config_tab();
    out_ << "</div>\n<div id=\"status_tab\" class=\"tabdiv\">";
    render_status_tab();
    out_ << "</div></div>\n";
}

void StatusPage::render_config_tab()
{
    out_ << "<div id=\"" << parts_.configId << "\"><form method=\"post\" action=\"\"><table class=\"form_table\">";
    render_config_rows();
    render_form(form_);
    out_ << "</table></form></div>";
}

void StatusPage::render_status_tab()
{
    out_ << "<div class=\"command_output\" id=\"" << parts_.statusId << "\"><img src=\"" << content_.media_root
         << "/images/spinner.gif\" alt=\"Loading\" class=\"spinner_image\" /></div>";
}

void StatusPage::render_sections(const std::vector<data::ShellOutput::Section>& sections)
{
    out_ << "<table class=\"shell_output\">";
    for (const auto& section : sections) {
        out_ << "<tr><td><h3>";
        Esc(section.title);
        out_ << "</h3><div class=\"command_output\"><pre>";
        Esc(section.output);
        out_ << "</pre></div></td></tr>";
    }
    out_ << "</table>";
}

void StatusPage::render_scripts()
{
    BaseFormTabbed::render_scripts();
    Json::Value& status = ScriptData("status");
    status["url"] = tabbed_.status_url;
    status["interval"] = tabbed_.refresh_interval;
    status["method"] = parts_.method;
    status["target"] = parts_.statusId;
    AddScript("/js/status.js");
    AddScript(parts_.script);
}

}  // namespace panelkit::views

// panelkit views: the Firmware page: the versions, the upload form and the (hidden) progress block.
#include "views/Firmware.h"

#include "page/Page.h"

namespace panelkit::views {

Firmware::Firmware(std::ostream& out, page::Content& content, const web::Application& app)
    : PageView(out, content, app)
{
}

const std::string& Firmware::Section(const std::string& title) const
{
    static const std::string none;
    for (const auto& section : page_.sections)
        if (section.title == title)
            return section.output;
    return none;
}

void Firmware::render_progress_block(bool shown)
{
    out_ << "<div class=\"progress_block" << (shown ? "" : " hidden")
         << "\"><div id=\"progress\"><div id=\"progressbar\"></div></div>"
            "<div id=\"tp\"></div><div id=\"bytes\"></div>";
    const std::string sha256 = page_.values.get("sha256", "").asString();
    out_ << "<div id=\"fw_image\"" << (sha256.empty() ? " class=\"hidden\"" : "")
         << ">SHA-256 of the image: <code id=\"fw_sha256\">";
    Esc(sha256);
    out_ << "</code></div></div>\n";
}

void Firmware::render_page()
{
    render_progress_block(false);
    out_ << "<div id=\"tabcontainer\"><ul class=\"tabnav\"><li><a href=\"#config_tab\">Load</a></li>"
            "<li><a href=\"#status_tab\">Status</a></li></ul>\n<div id=\"config_tab\" class=\"tabdiv\">"
            "<div id=\"component_config\"><form id=\"firmware_form\" method=\"post\" action=\"";
    Esc(page_.values.get("firmwareUrl", "").asString());
    out_ << "\" enctype=\"multipart/form-data\"><table class=\"form_table\"><tr><th>Firmware Version(s)</th>"
            "<td><pre>";
    Esc(Section("Firmware Version(s)"));
    out_ << "</pre></td></tr>";
    render_form(*page_.forms.front());
    out_ << "</table></form></div></div>\n<div id=\"status_tab\" class=\"tabdiv\"><div id=\"component_status\" "
            "class=\"command_output\">";
    render_sections(page_.sections);
    out_ << "</div></div></div>\n<div id=\"conf_hw_platform\" class=\"hidden\" data-name=\"platform\">";
    Esc(page_.values.get("platform", "").asString());
    out_ << "</div>\n";
}

void Firmware::render_scripts()
{
    PageView::render_scripts();
    ScriptData("tabs")["selected"] = page_.selected_tab;
    AddScript("/js/firmware.js");
}

}  // namespace panelkit::views

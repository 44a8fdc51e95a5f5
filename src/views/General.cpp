// panelkit views: the General page: identity, device name and live system status.
#include "views/General.h"

namespace panelkit::views {

General::General(std::ostream& out, data::General& content, const web::Application& app)
    : StatusPage(out, content, app, content.form,
                 {"general_config", "general_dynamic_status", "general_dynamic_status", "/js/general.js"}),
      page_(content)
{
}

void General::render_config_rows()
{
    out_ << "<tr><th>Assembly SN</th><td class=\"ui-serial-number\"><b>";
    Esc(page_.assembly_serial_number);
    out_ << "</b></td></tr><tr><th>Device ID</th><td class=\"ui-serial-number\"><b>";
    Esc(page_.device_id);
    out_ << "</b></td></tr>";
}

void General::render_status_tab()
{
    out_ << "<div class=\"command_output\" id=\"general_status\">";
    render_sections(page_.sections);
    out_ << "</div>";
    StatusPage::render_status_tab();
}

}  // namespace panelkit::views

// panelkit views: the Ethernet page: configuration, live status and diagnostic command output.
#include "views/Ethernet1.h"

namespace panelkit::views {

Ethernet1::Ethernet1(std::ostream& out, data::Ethernet1& content, const web::Application& app)
    : StatusPage(out, content, app, content.form,
                 {"ethernet1_config", "ethernet1_status", "ethernet1_status", "/js/ethernet1.js"}),
      page_(content)
{
}

void Ethernet1::render_status_tab()
{
    StatusPage::render_status_tab();
    out_ << "<div id=\"ethernet1_network_status\" class=\"command_output\">";
    render_sections(page_.sections);
    out_ << "</div>";
}

}  // namespace panelkit::views

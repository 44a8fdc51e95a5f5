// panelkit views: the DNS server page.
#include "views/DNSServer.h"

namespace panelkit::views {

DNSServer::DNSServer(std::ostream& out, data::DNSServer& content, const web::Application& app)
    : StatusPage(out, content, app, content.form,
                 {"dns_server_config", "dns_server_status", "dns_server_status", "/js/dnsserver.js"})
{
}

}  // namespace panelkit::views

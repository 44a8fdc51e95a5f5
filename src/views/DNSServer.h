// panelkit views: the DNS server page.
#pragma once

#include "data/DNSServer.h"
#include "views/StatusPage.h"

namespace panelkit::views {

/// The "DNSServer" view.
class DNSServer : public StatusPage {
public:
    /// A view of the DNS content.
    DNSServer(std::ostream& out, data::DNSServer& content, const web::Application& app);
};

}  // namespace panelkit::views

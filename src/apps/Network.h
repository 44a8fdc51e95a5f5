// panelkit apps: the Network controller (Ethernet, OpenVPN, site connection, forwarding, cellular, NTP, DNS, Wi-Fi, UHF).
#pragma once

#include "apps/Base.h"
#include "page/Page.h"

#include <vector>

namespace panelkit::apps {

/// The pages of the Network menu below "/network".
class Network : public Base {
public:
    /// Routes every page of the table.
    explicit Network(web::Service& service);
    /// The pages in menu order: routes, mapper names, menu entries and status methods.
    static const std::vector<page::Page>& Pages();
};

}  // namespace panelkit::apps

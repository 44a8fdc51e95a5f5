// panelkit apps: the Network controller (Ethernet, OpenVPN, site connection, forwarding, cellular, NTP, DNS, Wi-Fi, UHF).
#pragma once

#include "apps/Base.h"

#include <string>

namespace panelkit::apps {

/// The pages of the Network menu below "/network".
class Network : public Base {
public:
    /// Registers the ten routes and their mapper names.
    explicit Network(web::Service& service);
    /// The JSON-RPC endpoint the status tabs post to.
    std::string StatusUrl() const;
};

}  // namespace panelkit::apps

// panelkit apps: the Network controller (Ethernet, OpenVPN, site connection, forwarding, cellular, NTP, DNS, Wi-Fi, UHF).
#pragma once

#include "apps/Base.h"

#include <string>

namespace panelkit::data {
class Ethernet1;
}

namespace panelkit::apps {

/// The pages of the Network menu below "/network".
class Network : public Base {
public:
    /// Registers the ten routes and their mapper names.
    explicit Network(web::Service& service);
    /// The "Ethernet 1" page.
    void Ethernet1();
    /// The custom DNS servers page.
    void DNSServer();
    /// An Ethernet settings page, parameterised by its title and its five store keys.
    void EthernetInternal(data::Ethernet1& content, const std::string& title, const std::string& modeKey,
                          const std::string& ipKey, const std::string& netmaskKey, const std::string& gatewayKey,
                          const std::string& speedKey);
};

}  // namespace panelkit::apps

// panelkit apps: the Network controller (Ethernet, OpenVPN, site connection, forwarding, cellular, NTP, DNS, Wi-Fi, UHF).
#include "apps/Network.h"

#include "apps/RoutePage.h"
#include "web/Settings.h"

namespace panelkit::apps {

Network::Network(web::Service& service) : Base(service, "")
{
    RoutePage::Bind(*this, {
                               {"ethernet1", "/ethernet1", "/ethernet1", "Ethernet 1"},
                               {"openvpn", "/openvpn", "/openvpn", "OpenVPN"},
                               {"tavrion", "/tavrion", "/tavrion", "Tavrion"},
                               {"port_forwarding", "/port_forwarding", "/port_forwarding", "Port Forwarding"},
                               {"cellular", "/cellular", "/cellular", "Cellular"},
                               {"ntp", "/ntp", "/ntp", "NTP Server"},
                               {"dns_server", "/dns_server", "/dns_server", "DNS Server"},
                               {"access_point", "/access_point", "/access_point", "Access Point"},
                               {"wlan", "/wlan", "/wlan", "WLAN"},
                               {"uhf", "/uhf", "/uhf", "UHF Channels"},
                           });
}

std::string Network::StatusUrl() const
{
    return "/" + settings().at("panelkit.root.async").asString() + "/" + settings().at("panelkit.root.rpc").asString();
}

}  // namespace panelkit::apps

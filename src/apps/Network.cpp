// panelkit apps: the Network controller (Ethernet, OpenVPN, site connection, forwarding, cellular, NTP, DNS, Wi-Fi, UHF).
#include "apps/Network.h"

#include "pages/DnsServer.h"
#include "pages/Ethernet.h"
#include "pages/Ntp.h"
#include "pages/PortForwarding.h"

namespace panelkit::apps {

namespace {

// A page of the menu whose content has not landed yet: the layout with its title.
page::Page Pending(const std::string& name, const std::string& menu)
{
    return page::Page(name, menu).Menu(menu);
}

}  // namespace

Network::Network(web::Service& service) : Base(service, "")
{
    Bind(Pages());
}

const std::vector<page::Page>& Network::Pages()
{
    static const std::vector<page::Page> pages = {
        pages::Ethernet("ethernet1", "Ethernet 1",
                        {"net/lan_addr_mode", "net/lan_ipaddr", "net/lan_netmask", "net/lan_gateway",
                         "net/lan_advertise_speed"}),
        Pending("openvpn", "OpenVPN"),
        Pending("tavrion", "Tavrion"),
        pages::PortForwarding(),
        Pending("access_point", "Access Point"),
        Pending("wlan", "WLAN"),
        Pending("cellular", "Cellular"),
        pages::Ntp(),
        pages::DnsServer(),
        Pending("uhf", "UHF Channels"),
    };
    return pages;
}

}  // namespace panelkit::apps

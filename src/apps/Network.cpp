// panelkit apps: the Network controller (Ethernet, OpenVPN, site connection, forwarding, cellular, NTP, DNS, Wi-Fi, UHF).
#include "apps/Network.h"

#include "apps/RoutePage.h"
#include "data/DNSServer.h"
#include "data/Ethernet1.h"
#include "util/Binding.h"
#include "util/Commands.h"
#include "util/DevicePath.h"
#include "util/FlagFiles.h"
#include "util/Pardb.h"
#include "web/Settings.h"

namespace panelkit::apps {

namespace {

// The Ethernet page's diagnostics: (title, command, output limit). Device files go through the device root.
struct Diagnostic {
    const char* title;
    std::string command;
    std::size_t limit;
};

std::vector<Diagnostic> EthernetDiagnostics()
{
    return {
        {"Network Config", "ifconfig", 4096},
        {"Routing", "route -n", 4096},
        {"Wireless Config", "iw dev", 4096},
        {"Network Status", "netstat -an", 8192},
        {"DNS Settings", "cat " + util::ShellDevicePath("/etc/resolv.conf"), 4096},
        {"PPP Status",
         "/bin/sh -c \"for ii in `ifconfig|grep ppp|awk '{print $1}'`; do echo $ii; pppstats $ii; done\"", 4096},
        {"DHCP Leases", "cat " + util::ShellDevicePath("/tmp/dhcp.leases"), 4096},
    };
}

// A save that changed settings needing a reboot: the message, and the alert on this very response.
void SavedForReboot(data::Base& content, const std::string& text)
{
    content.message = data::Message::OK(text);
    util::MarkRebootRequired();
    content.reboot_required = util::IsRebootRequired();
}

}  // namespace

Network::Network(web::Service& service) : Base(service, "")
{
    mapper().assign("ethernet1", "/ethernet1");
    dispatcher().assign("/ethernet1", &Network::Ethernet1, this);
    RoutePage::Bind(*this, {
                               {"openvpn", "/openvpn", "/openvpn", "OpenVPN"},
                               {"tavrion", "/tavrion", "/tavrion", "Tavrion"},
                               {"port_forwarding", "/port_forwarding", "/port_forwarding", "Port Forwarding"},
                               {"cellular", "/cellular", "/cellular", "Cellular"},
                               {"ntp", "/ntp", "/ntp", "NTP Server"},
                           });
    mapper().assign("dns_server", "/dns_server");
    dispatcher().assign("/dns_server", &Network::DNSServer, this);
    RoutePage::Bind(*this, {
                               {"access_point", "/access_point", "/access_point", "Access Point"},
                               {"wlan", "/wlan", "/wlan", "WLAN"},
                               {"uhf", "/uhf", "/uhf", "UHF Channels"},
                           });
}

void Network::Ethernet1()
{
    data::Ethernet1 content;
    content.refresh_interval = 1000;
    EthernetInternal(content, "Ethernet 1", "net/lan_addr_mode", "net/lan_ipaddr", "net/lan_netmask",
                     "net/lan_gateway", "net/lan_advertise_speed");
    for (const auto& diagnostic : EthernetDiagnostics())
        content.sections.emplace_back(diagnostic.title, util::ShellCommand(diagnostic.command, diagnostic.limit));
    render("Ethernet1", content);
}

void Network::EthernetInternal(data::Ethernet1& content, const std::string& title, const std::string& modeKey,
                               const std::string& ipKey, const std::string& netmaskKey,
                               const std::string& gatewayKey, const std::string& speedKey)
{
    forms::Ethernet1& form = content.form;
    Prepare(content);
    content.title = title + " Configuration";
    content.refresh_interval = 1000;
    content.status_url = StatusUrl();
    // Stored in this order: the addresses (static mode only), then the mode.
    const std::vector<util::Binding> addresses = {util::Bindings::Text(form.ipAddress, ipKey),
                                                  util::Bindings::Text(form.gateway, gatewayKey),
                                                  util::Bindings::Select(form.netmask, netmaskKey)};
    const std::vector<util::Binding> mode = {util::Bindings::Select(form.addressMode, modeKey)};

    if (HttpPost()) {
        form.AddSpeeds(0);
        if (!ValidateForm(form)) {
            content.message = data::Message::ValidationError();
        } else {
            const bool stored = (form.addressMode.selected_id() != "static" || util::Bindings::Save(addresses)) &&
                                util::Bindings::Save(mode) && util::Pardb::Set(speedKey, form.SpeedMask());
            if (stored)
                SavedForReboot(content, title + " settings updated, reboot to take effect");
            else
                content.message = data::Message::SaveError();
        }
    }
    if (HttpGet() || (HttpPost() && form.addressMode.selected_id() == "dhcp")) {
        util::Bindings::Load(mode);
        util::Bindings::Load(addresses);
    }
    if (HttpGet())
        form.AddSpeeds(util::Pardb::GetInt(speedKey));
}

void Network::DNSServer()
{
    data::DNSServer content;
    forms::DNSServer& form = content.form;
    Prepare(content);
    content.title = "Custom DNS Servers";
    content.refresh_interval = 1000;
    content.status_url = StatusUrl();
    const std::vector<util::Binding> bindings = {
        util::Bindings::Text(form.preferred, "net/lan_dns1"),
        util::Bindings::Text(form.alternate, "net/lan_dns2"),
        util::Bindings::Text(form.suffix, "net/lan_dns_suffix"),
        util::Bindings::Flag(form.append, "net/lan_dns_is_append"),
    };
    if (HttpPost()) {
        if (!ValidateForm(form))
            content.message = data::Message::ValidationError();
        else if (util::Bindings::Save(bindings))
            SavedForReboot(content, "DNS server settings updated, reboot to take effect");
        else
            content.message = data::Message::SaveError();
    } else if (HttpGet()) {
        util::Bindings::Load(bindings);
    }
    render("DNSServer", content);
}

}  // namespace panelkit::apps

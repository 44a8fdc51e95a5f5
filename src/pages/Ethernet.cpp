// panelkit pages: an Ethernet port's page: addressing, netmask, gateway, advertised speeds and its diagnostics.
#include "pages/Ethernet.h"

#include "util/Commands.h"

#include <sstream>

namespace panelkit::pages {

namespace {

// "255.255.255.252/30" → "255.255.255.252", down to /8.
std::vector<std::pair<std::string, std::string>> Netmasks()
{
    std::vector<std::pair<std::string, std::string>> masks;
    for (int prefix = 30; prefix >= 8; --prefix) {
        const unsigned mask = 0xFFFFFFFFu << (32 - prefix);
        const std::string dotted = std::to_string(mask >> 24) + "." + std::to_string((mask >> 16) & 255) + "." +
                                   std::to_string((mask >> 8) & 255) + "." + std::to_string(mask & 255);
        masks.emplace_back(dotted + "/" + std::to_string(prefix), dotted);
    }
    return masks;
}

}  // namespace

std::string PppStatus(std::size_t limit)
{
    // The device's command line is read by two shells, and the outer one expands `$1` and `$ii`
    // to nothing: every word of ifconfig's ppp lines gives an empty line and pppstats' own report.
    std::istringstream interfaces(util::Run({"ifconfig"}, 1 << 20));
    std::string out;
    for (std::string line; std::getline(interfaces, line);) {
        if (line.find("ppp") == std::string::npos)
            continue;
        std::istringstream words(line);
        for (std::string word; words >> word;)
            out += "\n" + util::Run({"pppstats"}, 1 << 20);
    }
    return util::Bounded(out, limit);
}

page::Page Ethernet(const std::string& name, const std::string& port, const EthernetKeys& keys)
{
    using page::Field;
    using page::Output;
    page::Page eth(name, port + " Configuration");
    eth.Menu(port).View("Ethernet1").Form(name + "_config");
    // The addresses count only in static mode: checked, stored and shown only then.
    eth.Add(Field::Select("addressMode", "cfg_eth1_address_mode", "Address Mode", {{"Static", "static"}, {"DHCP", "dhcp"}})
                .Selected("static")
                .Key(keys.mode))
        .Add(Field::Ip("ipAddress", "cfg_eth1_ip", "IP Address").Key(keys.ip).When("addressMode", "static"))
        .Add(Field::Select("netmask", "cfg_eth1_netmask", "Netmask", Netmasks()).Key(keys.netmask).When("addressMode", "static"))
        .Add(Field::Ip("gateway", "cfg_eth1_gateway", "Gateway").Key(keys.gateway).When("addressMode", "static"))
        .Add(Field::Multi("speedsAvailable", "cfg_eth1_speed", "Available speeds",
                          {"10Mbs Half duplex", "10Mbs Full duplex", "100Mbs Half duplex", "100Mbs Full duplex"})
                 .Choices(4, 1, "At least one speed must be selected")
                 .Mask(keys.speed))
        .Add(Field::Submit("saveButton", "cfg_eth1_save", "Save"))
        .SaveOrder({"ipAddress", "gateway", "netmask", "addressMode", "speedsAvailable"})
        .Saved(port + " settings updated, reboot to take effect", true)
        .ReloadAfterPost("addressMode", "dhcp", {"addressMode", "ipAddress", "netmask", "gateway"});
    // The port the page calls Ethernet 1 is eth0 on the device.
    eth.Status(name + "_status", {Output::Command("brctl", "Bridge Setup", {"brctl", "show"}, 4096),
                                  Output::Command("br1", "Bridge Interface", {"ifconfig", "br1"}, 4096),
                                  Output::Command("eth1", "Ethernet1 Interface", {"ifconfig", "eth0"}, 4096),
                                  Output::Command("ethtool", "Ethernet1 Settings", {"ethtool", "eth0"}, 4096)});
    eth.Diagnostics(name + "_network_status",
                    {Output::Command("", "Network Config", {"ifconfig"}, 4096),
                     Output::Command("", "Routing", {"route", "-n"}, 4096),
                     Output::Command("", "Wireless Config", {"iw", "dev"}, 4096),
                     Output::Command("", "Network Status", {"netstat", "-an"}, 8192),
                     Output::File("", "DNS Settings", "/etc/resolv.conf", 4096),
                     Output::Computed("", "PPP Status", [] { return PppStatus(4096); }),
                     Output::File("", "DHCP Leases", "/tmp/dhcp.leases", 4096)});
    return eth;
}

}  // namespace panelkit::pages

// panelkit pages: the custom DNS servers page.
#include "pages/DnsServer.h"

namespace panelkit::pages {

page::Page DnsServer()
{
    using page::Field;
    page::Page dns("dns_server", "Custom DNS Servers");
    dns.Menu("DNS Server").View("DNSServer").Form("dns_server_config");
    // The ids count from 0 and the keys from 1: "cfg_eth1_dns0" edits "net/lan_dns1".
    dns.Add(Field::Text("dnsServer0", "cfg_eth1_dns0", "Preferred DNS Server").Key("net/lan_dns1"))
        .Add(Field::Text("dnsServer1", "cfg_eth1_dns1", "Alternate DNS Server").Key("net/lan_dns2"))
        .Add(Field::Text("dnsSuffix", "cfg_eth1_dnssfx", "DNS Suffix").Key("net/lan_dns_suffix"))
        .Add(Field::Check("isAppend", "", "Append to System DNS Configuration").Flag("net/lan_dns_is_append"))
        .Add(Field::Submit("saveButton", "cfg_eth1_save", "Save"))
        .Saved("DNS server settings updated, reboot to take effect", true);
    dns.Status("dns_server_status", {page::Output::FileOrError("currentConf", "DNS Settings", "/etc/resolv.conf", 4096)});
    return dns;
}

}  // namespace panelkit::pages

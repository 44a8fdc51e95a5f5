// panelkit forms: the DNS server page.
#include "forms/DNSServer.h"

namespace panelkit::forms {

namespace {

void Describe(web::widgets::BaseWidget& widget, const char* id, const char* name, const char* label)
{
    widget.id(id);
    widget.name(name);
    widget.message(label);
}

}  // namespace

DNSServer::DNSServer()
{
    Describe(preferred, "cfg_eth1_dns0", "dnsServer0", "Preferred DNS Server");
    Describe(alternate, "cfg_eth1_dns1", "dnsServer1", "Alternate DNS Server");
    Describe(suffix, "cfg_eth1_dnssfx", "dnsSuffix", "DNS Suffix");
    Describe(append, "", "isAppend", "Append to System DNS Configuration");
    Describe(save, "cfg_eth1_save", "saveButton", "");
    save.value("Save");
    add(preferred);
    add(alternate);
    add(suffix);
    add(append);
    add(save);
}

}  // namespace panelkit::forms

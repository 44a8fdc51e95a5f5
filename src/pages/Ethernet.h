// panelkit pages: an Ethernet port's page: addressing, netmask, gateway, advertised speeds and its diagnostics.
#pragma once

#include "page/Page.h"

#include <string>

namespace panelkit::pages {

/// The store keys of one Ethernet port.
struct EthernetKeys {
    std::string mode;
    std::string ip;
    std::string netmask;
    std::string gateway;
    std::string speed;
};

/// An Ethernet page under the mapper name, titled after the port ("Ethernet 1").
page::Page Ethernet(const std::string& name, const std::string& port, const EthernetKeys& keys);
/// What the device's PPP status command prints, at most limit bytes.
std::string PppStatus(std::size_t limit);

}  // namespace panelkit::pages

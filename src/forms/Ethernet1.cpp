// panelkit forms: the Ethernet page: addressing mode, address, netmask, gateway and advertised speeds.
#include "forms/Ethernet1.h"

namespace panelkit::forms {

const char* const Ethernet1::kSpeeds[4] = {"10Mbs Half duplex", "10Mbs Full duplex", "100Mbs Half duplex",
                                           "100Mbs Full duplex"};

Ethernet1::Ethernet1()
{
    addressMode.name("addressMode");
    addressMode.id("cfg_eth1_address_mode");
    addressMode.message("Address Mode");
    addressMode.add("Static", "static");
    addressMode.add("DHCP", "dhcp");
    addressMode.selected_id("static");

    ipAddress.name("ipAddress");
    ipAddress.id("cfg_eth1_ip");
    ipAddress.message("IP Address");
    ipAddress.error_message("Invalid IP address");

    netmask.name("netmask");
    netmask.id("cfg_eth1_netmask");
    netmask.message("Netmask");
    for (int prefix = 30; prefix >= 8; --prefix) {
        const unsigned mask = 0xFFFFFFFFu << (32 - prefix);
        const std::string dotted = std::to_string(mask >> 24) + "." + std::to_string((mask >> 16) & 255) + "." +
                                   std::to_string((mask >> 8) & 255) + "." + std::to_string(mask & 255);
        netmask.add(dotted + "/" + std::to_string(prefix), dotted);
    }

    gateway.name("gateway");
    gateway.id("cfg_eth1_gateway");
    gateway.message("Gateway");
    gateway.error_message("Invalid IP address");

    speedsAvailable.name("speedsAvailable");
    speedsAvailable.id("cfg_eth1_speed");
    speedsAvailable.message("Available speeds");
    speedsAvailable.rows(4);
    speedsAvailable.at_least(1);
    speedsAvailable.error_message("At least one speed must be selected");

    saveButton.name("saveButton");
    saveButton.id("cfg_eth1_save");
    saveButton.value("Save");

    add(addressMode);
    add(ipAddress);
    add(netmask);
    add(gateway);
    add(speedsAvailable);
    add(saveButton);
}

void Ethernet1::AddSpeeds(int mask)
{
    for (int i = 0; i < 4; ++i)
        speedsAvailable.add(kSpeeds[i], std::to_string(i), (mask & (1 << i)) != 0);
}

int Ethernet1::SpeedMask() const
{
    int mask = 0;
    for (std::size_t i = 0; i < speedsAvailable.options().size(); ++i)
        if (speedsAvailable.options()[i].selected)
            mask |= 1 << i;
    return mask;
}

bool Ethernet1::validate()
{
    if (addressMode.selected_id() == "dhcp") {
        ipAddress.SetAllowEmpty(true);
        gateway.SetAllowEmpty(true);
    }
    return Base::validate();
}

}  // namespace panelkit::forms

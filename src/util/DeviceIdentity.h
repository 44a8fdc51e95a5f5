// panelkit util: the device's identity: name, assembly serial number, device ID and current address.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace panelkit::util {

/// "ulm3_" and the assembly serial number, read once.
std::string DeviceName();
/// The assembly serial number.
std::string SystemAssemblySN();
/// The device ID, or the reason it cannot be shown.
std::string SystemDeviceID();
/// The device's IPv4 address: br1's, else eth0's, else eth1's, else ""; on a simulated device, from its ifconfig.
std::string GetCurrentIPAddress();
/// The address GetCurrentIPAddress picks from (interface, IPv4 address) pairs; a later pair of an interface wins.
std::string CurrentIPAddressOf(const std::vector<std::pair<std::string, std::string>>& addresses);

}  // namespace panelkit::util

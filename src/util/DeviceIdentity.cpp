// panelkit util: the device's identity: name, assembly serial number, device ID and current address.
#include "util/DeviceIdentity.h"

#include <qor_util/system.h>

#include <ifaddrs.h>
#include <map>
#include <netdb.h>
#include <netinet/in.h>

namespace panelkit::util {

std::string DeviceName()
{
    static const std::string name = "ulm3_" + qor_util::system::GetBarcodeASN();
    return name;
}

std::string SystemAssemblySN()
{
    return qor_util::system::GetBarcodeASN();
}

std::string SystemDeviceID()
{
    int status = 0;
    const std::string id = qor_util::system::GetDeviceID(&status);
    if (status == 2)
        return "(error: invalid ID)";
    if (status == 1)
        return "(error: ID not initialized)";
    return id;
}

std::string CurrentIPAddressOf(const std::vector<std::pair<std::string, std::string>>& addresses)
{
    std::map<std::string, std::string> byInterface;
    for (const auto& [name, address] : addresses)
        if (name == "eth0" || name == "eth1" || name == "br1")
            byInterface[name] = address;
    for (const char* preferred : {"br1", "eth0", "eth1"}) {
        auto it = byInterface.find(preferred);
        if (it != byInterface.end())
            return it->second;
    }
    return "";
}

std::string GetCurrentIPAddress()
{
    ifaddrs* list = nullptr;
    if (::getifaddrs(&list) != 0)
        return "";
    std::vector<std::pair<std::string, std::string>> addresses;
    for (const ifaddrs* entry = list; entry; entry = entry->ifa_next) {
        if (!entry->ifa_addr || entry->ifa_addr->sa_family != AF_INET)
            continue;
        char host[NI_MAXHOST] = "";
        if (::getnameinfo(entry->ifa_addr, sizeof(sockaddr_in), host, sizeof host, nullptr, 0, NI_NUMERICHOST) != 0)
            host[0] = '\0';
        addresses.emplace_back(entry->ifa_name, host);
    }
    ::freeifaddrs(list);
    return CurrentIPAddressOf(addresses);
}

}  // namespace panelkit::util

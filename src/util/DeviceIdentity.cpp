// panelkit util: the device's identity: name, assembly serial number, device ID and current address.
#include "util/DeviceIdentity.h"

#include "util/Commands.h"
#include "util/DevicePath.h"

#include <qor_util/system.h>

#include <ifaddrs.h>
#include <map>
#include <netdb.h>
#include <netinet/in.h>
#include <sstream>

namespace panelkit::util {

namespace {

// The interfaces' IPv4 addresses as the kernel reports them.
std::vector<std::pair<std::string, std::string>> KernelAddresses()
{
    std::vector<std::pair<std::string, std::string>> addresses;
    ifaddrs* list = nullptr;
    if (::getifaddrs(&list) != 0)
        return addresses;
    for (const ifaddrs* entry = list; entry; entry = entry->ifa_next) {
        if (!entry->ifa_addr || entry->ifa_addr->sa_family != AF_INET)
            continue;
        char host[NI_MAXHOST] = "";
        if (::getnameinfo(entry->ifa_addr, sizeof(sockaddr_in), host, sizeof host, nullptr, 0, NI_NUMERICHOST) != 0)
            host[0] = '\0';
        addresses.emplace_back(entry->ifa_name, host);
    }
    ::freeifaddrs(list);
    return addresses;
}

// The interfaces' IPv4 addresses as the device's ifconfig lists them: a block per interface that
// starts with its name, and an "inet addr:A.B.C.D" line (or "inet A.B.C.D") for its address.
std::vector<std::pair<std::string, std::string>> IfconfigAddresses()
{
    std::vector<std::pair<std::string, std::string>> addresses;
    std::istringstream lines(Run({DevicePath("/sbin/ifconfig")}, 64 * 1024));
    std::string line;
    std::string name;
    while (std::getline(lines, line)) {
        std::istringstream words(line);
        std::string word;
        if (!(words >> word))
            continue;
        if (line[0] != ' ' && line[0] != '\t') {
            name = word.back() == ':' ? word.substr(0, word.size() - 1) : word;
            continue;
        }
        if (word != "inet" || !(words >> word))
            continue;
        addresses.emplace_back(name, word.rfind("addr:", 0) == 0 ? word.substr(5) : word);
    }
    return addresses;
}

}  // namespace

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
    // A simulated device's interfaces are its own; the host's must never show through.
    return CurrentIPAddressOf(DeviceRoot().empty() ? KernelAddresses() : IfconfigAddresses());
}

}  // namespace panelkit::util

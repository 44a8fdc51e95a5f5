// panelkit util: device paths resolved through the device root, so that a simulated device never touches the host.
#include "util/DevicePath.h"

#include <climits>
#include <cstdlib>
#include <unistd.h>

namespace panelkit::util {

namespace {

std::string Absolute(const std::string& root)
{
    if (root.empty() || root[0] == '/')
        return root;
    char cwd[PATH_MAX];
    if (!::getcwd(cwd, sizeof cwd))
        return root;
    return std::string(cwd) + "/" + root;
}

std::string& Root()
{
    static std::string root = [] {
        const char* env = std::getenv("PANELKIT_DEVICE_ROOT");
        return Absolute(env ? env : "");
    }();
    return root;
}

}  // namespace

void SetDeviceRoot(const std::string& root)
{
    std::string absolute = Absolute(root);
    while (absolute.size() > 1 && absolute.back() == '/')
        absolute.pop_back();
    Root() = absolute;
}

const std::string& DeviceRoot()
{
    return Root();
}

std::string DevicePath(const std::string& path)
{
    return Root() + path;
}

}  // namespace panelkit::util

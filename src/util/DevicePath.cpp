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

// The device's program folders come first on PATH, so that its programs are found before the host's.
void PutProgramsFirst(const std::string& root)
{
    static const std::string hostPath = [] {
        const char* path = std::getenv("PATH");
        return std::string(path ? path : "/usr/bin:/bin");
    }();
    if (root.empty()) {
        ::setenv("PATH", hostPath.c_str(), 1);
        return;
    }
    std::string path;
    for (const char* folder : {"/usr/sbin", "/usr/bin", "/sbin", "/bin"})
        path += root + folder + ":";
    ::setenv("PATH", (path + hostPath).c_str(), 1);
}

}  // namespace

void SetDeviceRoot(const std::string& root)
{
    std::string absolute = Absolute(root);
    while (absolute.size() > 1 && absolute.back() == '/')
        absolute.pop_back();
    Root() = absolute;
    // Child programs and the platform libraries find the device through the environment.
    ::setenv("PANELKIT_DEVICE_ROOT", absolute.c_str(), 1);
    PutProgramsFirst(absolute);
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

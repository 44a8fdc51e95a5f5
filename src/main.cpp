// panelkit: process entry; builds the service, serves, and rebuilds it after a forced reload.
#include "apps/Panelkit.h"
#include "util/Commands.h"
#include "util/DevicePath.h"
#include "util/Environment.h"
#include "util/FlagFiles.h"
#include "util/PluginManager.h"
#include "web/Application.h"
#include "web/Error.h"
#include "web/FileServer.h"
#include "web/Log.h"
#include "web/Service.h"

#include <atomic>
#include <fstream>
#include <memory>
#include <sstream>
#include <syslog.h>
#include <unistd.h>

using namespace panelkit;

namespace {

std::atomic<bool> g_firstPass{true};

void StartRequestedUpgrade()
{
    if (!util::IsFirmwareUpgradeFlagged())
        return;
    util::MarkFirmwareUpgrade(false);
    const std::string mountDir = util::GetEnv("MOUNT_DIR");
    util::FirmwareUpgradePid() = util::ForkFirmwareUpgrade(util::FirmwareUpgradeFile(), mountDir);
    ::sleep(4);
}

// The device's reboot finds the web service here to restart it.
void WritePidFile()
{
    std::ofstream(util::DevicePath("/var/run/panelkit.pid")) << ::getpid() << "\n";
}

// The internal server hands out plugin media as the device's web server does:
// <plugin media root>/<volume>/head/<file> is that volume's plugins/media/head/<file>.
void ServePluginMedia(web::Service& service)
{
    const std::string mountDir = util::GetEnv("MOUNT_DIR");
    std::string root = util::EnvOrSettings("PLUGIN_MEDIA_ROOT", "panelkit.plugin_media_root", service.settings());
    if (mountDir.empty() || root.empty())
        return;
    if (root[0] != '/')
        root.insert(root.begin(), '/');
    service.serveFiles(root + "/", [mountDir](const std::string& rest, web::Response& response) {
        const auto slash = rest.find('/', 1);
        const std::string volume = slash == std::string::npos ? "" : rest.substr(1, slash - 1);
        if (volume.empty() || volume == "." || volume == "..")
            return false;
        return web::FileServer(util::PluginManager::MediaFolder(mountDir, volume)).serve(rest.substr(slash), response);
    });
}

// One pass: build the service, mount the trees, serve. True when the loop must run again.
bool ServeOnce(int argc, char** argv)
{
    if (!g_firstPass.exchange(false))
        util::PluginManager::Instance().Unload();
    // The device root comes from the configuration, so the flag files can be found before serving.
    auto service = std::make_unique<web::Service>(argc, argv);
    util::SetDeviceRoot(util::EnvOrSettings("PANELKIT_DEVICE_ROOT", "panelkit.device_root", service->settings()));
    service->uploadDirectory(util::DevicePath("/tmp"));
    WritePidFile();

    StartRequestedUpgrade();
    PK_DEBUG() << "panelkit start";

    apps::Panelkit::Mount(*service);
    service->redirectRoot("/" + service->settings().at("panelkit.root.sync").asString() + "/");
    ServePluginMedia(*service);
    service->run();

    const bool reload = util::IsForceReloadFlagged();
    if (reload) {
        util::MarkForceReload(false);
        PK_INFO() << "panelkit ** forced reload **";
    }
    service.reset();
    return reload;
}

void LogException(const std::exception& e)
{
    PK_ERROR() << "Exception: " << e.what();
    std::ostringstream trace;
    if (const auto* traced = dynamic_cast<const web::Error*>(&e))
        for (const auto& frame : traced->StackTrace())
            trace << frame << "\n";
    PK_ERROR() << trace.str() << std::endl;
}

}  // namespace

int main(int argc, char** argv)
{
    ::openlog("web", 0, LOG_DAEMON);
    try {
        while (ServeOnce(argc, argv)) {
        }
    } catch (const std::exception& e) {
        LogException(e);
        return 1;
    }
    PK_DEBUG() << "panelkit exit" << std::endl;
    return 0;
}

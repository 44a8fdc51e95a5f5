// panelkit apps: the Settings controller (general information, firmware, reboot, advanced, about).
#include "apps/Settings.h"

#include "apps/RoutePage.h"
#include "web/Settings.h"

namespace panelkit::apps {

Settings::Settings(web::Service& service) : Base(service, "")
{
    mapper().assign("/");
    dispatcher().assign("/?", [this] { General(); });
    RoutePage::Bind(*this, {
                               {"general", "/general", "/general", "General"},
                               {"firmware", "/firmware", "/firmware", "Firmware"},
                               {"firmware_upgrade_status", "/firmware_upgrade_status", "/firmware_upgrade_status",
                                "Firmware Upgrade Status"},
                               {"reboot", "/reboot", "/reboot", "Reboot"},
                               {"advanced", "/advanced", "/advanced", "Advanced"},
                               {"about", "/about", "/about", "About"},
                           });
    mapper().assign("about2", "/about/{1}/{2}");
    dispatcher().assign(
        "/about/([A-Za-z0-9][A-Za-z0-9-\\+\\.]*)/([A-Za-z0-9][A-Za-z0-9-_\\+\\.]*)",
        [this](std::string package, std::string file) {
            RoutePage::Render(*this, "About " + package + " " + file, "about2", {package, file});
        },
        1, 2);
    dispatcher().assign("", [this] { General(); });
}

void Settings::General()
{
    RoutePage::Render(*this, "General Device Configuration", "general");
}

std::string Settings::StatusUrl() const
{
    return "/" + settings().at("panelkit.root.async").asString() + "/" + settings().at("panelkit.root.rpc").asString();
}

}  // namespace panelkit::apps

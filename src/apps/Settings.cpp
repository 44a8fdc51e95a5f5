// panelkit apps: the Settings controller (general information, firmware, reboot, advanced, about).
#include "apps/Settings.h"

#include "apps/RoutePage.h"
#include "data/General.h"
#include "util/Binding.h"
#include "util/Commands.h"
#include "util/DeviceIdentity.h"
#include "util/DevicePath.h"
#include "web/Settings.h"

namespace panelkit::apps {

Settings::Settings(web::Service& service) : Base(service, "")
{
    mapper().assign("/");
    dispatcher().assign("/?", [this] { General(); });
    mapper().assign("general", "/general");
    dispatcher().assign("/general", [this] { General(); });
    RoutePage::Bind(*this, {
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
    data::General content;
    forms::General& form = content.form;
    Prepare(content);
    content.title = "General Device Configuration";
    content.assembly_serial_number = util::SystemAssemblySN();
    content.device_id = util::SystemDeviceID();
    content.refresh_interval = 1000;
    content.status_url = StatusUrl();
    const std::vector<util::Binding> bindings = {util::Bindings::Text(form.deviceName, "net/hostname"),
                                                 util::Bindings::Select(form.language, "language")};
    if (HttpPost()) {
        if (!ValidateForm(form))
            content.message = data::Message::ValidationError();
        else
            content.message = util::Bindings::Save(bindings) ? data::Message::SaveOK() : data::Message::SaveError();
    } else if (HttpGet()) {
        util::Bindings::Load(bindings);
    }
    content.sections.emplace_back("Uname", util::ShellCommand("uname -a", 4096));
    content.sections.emplace_back("Version Info", util::ShellCommand("cat " + util::ShellDevicePath("/etc/version"), 4096));
    render("General", content);
}

}  // namespace panelkit::apps

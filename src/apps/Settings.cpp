// panelkit apps: the Settings controller (general information, firmware, reboot, advanced, about).
#include "apps/Settings.h"

#include "pages/About.h"
#include "pages/Advanced.h"
#include "pages/Firmware.h"
#include "pages/General.h"
#include "pages/Reboot.h"

namespace panelkit::apps {

Settings::Settings(web::Service& service) : Base(service, "")
{
    mapper().assign("/");
    dispatcher().assign("/?", [this] { General(); });
    Bind(Pages());
}

const std::vector<page::Page>& Settings::Pages()
{
    static const std::vector<page::Page> pages = {
        pages::General(),
        pages::Firmware(),
        pages::FirmwareUpgradeStatus(),
        pages::Reboot(),
        pages::Advanced(),
        pages::About(),
        pages::AboutFile(),
    };
    return pages;
}

void Settings::General()
{
    Serve(Pages().front());
}

}  // namespace panelkit::apps

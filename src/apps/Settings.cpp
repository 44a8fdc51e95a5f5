// panelkit apps: the Settings controller (general information, firmware, reboot, advanced, about).
#include "apps/Settings.h"

#include "pages/About.h"
#include "pages/Firmware.h"
#include "pages/General.h"
#include "pages/Reboot.h"

namespace panelkit::apps {

namespace {

page::Page Pending(const std::string& name, const std::string& title, const std::string& menu)
{
    return page::Page(name, title).Menu(menu);
}

}  // namespace

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
        Pending("advanced", "Advanced", "Advanced"),
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

// panelkit apps: the Settings controller (general information, firmware, reboot, advanced, about).
#include "apps/Settings.h"

#include "pages/Advanced.h"
#include "pages/General.h"

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
        Pending("firmware", "Firmware", "Firmware"),
        Pending("firmware_upgrade_status", "Firmware Upgrade Status", ""),
        Pending("reboot", "Reboot", "Reboot"),
        pages::Advanced(),
        Pending("about", "About", "About"),
        page::Page("about2", "About")
            .Route("/about/{1}/{2}", {"/about/([A-Za-z0-9][A-Za-z0-9-\\+\\.]*)/([A-Za-z0-9][A-Za-z0-9-_\\+\\.]*)"}, {1, 2})
            .Title([](const std::vector<std::string>& args) { return "About " + args[0] + " " + args[1]; }),
    };
    return pages;
}

void Settings::General()
{
    Serve(Pages().front());
}

}  // namespace panelkit::apps

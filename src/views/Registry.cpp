// panelkit views: the named views of the skin "panelkit", each checked against its content type.
#include "views/Registry.h"

#include "views/About.h"
#include "views/BaseForm.h"
#include "views/BaseFormTabbed.h"
#include "views/BaseTabbed.h"
#include "views/Firmware.h"
#include "views/FirmwareUpgradeProgress.h"
#include "views/PageView.h"
#include "views/PortForwarding.h"
#include "views/WaitReboot.h"
#include "web/Error.h"

namespace panelkit::views {

const Registry& Registry::Instance()
{
    static const Registry registry = [] {
        Registry r;
        r.add<Base, data::Base>("Base");
        r.add<BaseForm, data::Base>("BaseForm");
        r.add<BaseFormTabbed, data::BaseTabbed>("BaseFormTabbed");
        r.add<BaseTabbed, data::BaseTabbed>("BaseTabbed");
        r.add<PageView, page::Content>("General");
        r.add<PageView, page::Content>("Reboot");
        r.add<About, page::Content>("About");
        r.add<WaitReboot, page::Content>("WaitReboot");
        r.add<PageView, page::Content>("Ethernet1");
        r.add<PageView, page::Content>("DNSServer");
        r.add<Firmware, page::Content>("Firmware");
        r.add<FirmwareUpgradeProgress, page::Content>("FirmwareUpgradeProgress");
        r.add<PortForwarding, page::Content>("PortForwarding");
        return r;
    }();
    return registry;
}

void Registry::add(const std::string& name, Builder builder)
{
    views_.emplace_back(name, std::move(builder));
}

void Registry::Render(const std::string& name, std::ostream& out, data::Base& content,
                      const web::Application& app) const
{
    for (const auto& [viewName, builder] : views_) {
        if (viewName == name) {
            builder(out, content, app)->render();
            return;
        }
    }
    throw web::Error(std::string("no view \"") + name + "\" in the skin \"" + Skin() + "\"");
}

std::vector<std::string> Registry::Names() const
{
    std::vector<std::string> names;
    for (const auto& view : views_)
        names.push_back(view.first);
    return names;
}

void Registry::WrongContent(const std::string& name)
{
    throw web::Error("view \"" + name + "\" was given content of another type");
}

}  // namespace panelkit::views

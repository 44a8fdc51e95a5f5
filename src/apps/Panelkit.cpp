// panelkit apps: the root of the synchronous page tree.
#include "apps/Panelkit.h"

#include "apps/Network.h"
#include "apps/Regulatory.h"
#include "apps/Service.h"
#include "apps/Settings.h"
#include "util/FlagFiles.h"
#include "util/PluginManager.h"
#include "web/Settings.h"

#include <memory>

namespace panelkit::apps {

Panelkit::Panelkit(web::Service& service) : web::Application(service)
{
    Settings& pages = attach(std::make_unique<Settings>(service), "settings", "/settings{1}",
                             "/settings((?:/[^/]*){0,3}$)", 1);
    attach(std::make_unique<Network>(service), "network", "/network{1}", "/network(/[^/]*$)?", 1);
    attach(std::make_unique<Regulatory>(service, ""), "regulatory", "/regulatory{1}", "/regulatory(/(.*))?", 1);
    attach(std::make_unique<Service>(service, ""), "service", "/service{1}", "/service(/(.*))?", 1);
    dispatcher().assign("/?", [&pages] { pages.General(); });
    util::PluginManager::Instance().AttachSynchronousAppsHook(*this, service);
    mapper().root("/" + settings().at("panelkit.root.sync").asString());
}

void Panelkit::main(const std::string& url)
{
    if (util::IsFirmareUpgradeInProgress()) {
        web::Application::main("/settings/firmware_upgrade_status");
        return;
    }
    web::Application::main(url);
}

}  // namespace panelkit::apps

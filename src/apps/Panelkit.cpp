// panelkit apps: the root of the synchronous page tree.
#include "apps/Panelkit.h"

#include "apps/JsonRpc.h"
#include "apps/Network.h"
#include "apps/Regulatory.h"
#include "apps/Service.h"
#include "apps/Settings.h"
#include "util/FlagFiles.h"
#include "util/PluginManager.h"
#include "web/ApplicationsPool.h"
#include "web/MountPoint.h"
#include "web/Service.h"
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

void Panelkit::Mount(web::Service& service)
{
    const web::Settings& settings = service.settings();
    service.applicationsPool().mount(
        [](web::Service& s) { return std::unique_ptr<web::Application>(new Panelkit(s)); },
        web::MountPoint("/" + settings.at("panelkit.root.sync").asString() + "(.*)", 1));
    auto container = std::make_shared<web::Application>(service);
    service.applicationsPool().mountAsync(container,
                                          web::MountPoint("/" + settings.at("panelkit.root.async").asString() + "(.*)", 1));
    container->attach(std::make_unique<JsonRpc>(service), "rpc", "",
                      "/" + settings.at("panelkit.root.rpc").asString() + "(.*)", 0);
    util::PluginManager::Instance().AttachAsynchronousAppsHook(*container, service);
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

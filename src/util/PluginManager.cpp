// panelkit util: the plugin manager, process-wide, rebuilt after every reload.
#include "util/PluginManager.h"

#include "web/Log.h"

namespace panelkit::util {

std::mutex PluginManager::lock_;
std::unique_ptr<PluginManager> PluginManager::instance_;
bool PluginManager::stale_ = false;

PluginManager& PluginManager::Instance()
{
    std::lock_guard<std::mutex> guard(lock_);
    if (!instance_ || stale_) {
        instance_.reset(new PluginManager);
        stale_ = false;
        PK_DEBUG() << "PluginManager: created";
    }
    return *instance_;
}

void PluginManager::Unload()
{
    std::lock_guard<std::mutex> guard(lock_);
    stale_ = true;
    PK_DEBUG() << "PluginManager: unloaded";
}

void PluginManager::AttachSynchronousAppsHook(web::Application&, web::Service&)
{
}

void PluginManager::AttachAsynchronousAppsHook(web::Application&, web::Service&)
{
}

void PluginManager::PopulateBranding(data::Base::Branding&)
{
}

void PluginManager::PopulateMenuStartHook(std::vector<data::Menu>&)
{
}

void PluginManager::PopulateMenuEndHook(std::vector<data::Menu>&)
{
}

void PluginManager::PopulateStyleSheets(const std::string&, std::vector<std::string>&)
{
}

void PluginManager::PopulateScripts(const std::string&, std::vector<std::string>&)
{
}

}  // namespace panelkit::util

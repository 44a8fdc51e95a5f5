// panelkit util: the plugin manager, process-wide, rebuilt after every reload.
#pragma once

#include "data/Base.h"

#include <memory>
#include <mutex>
#include <string>
#include <vector>


namespace panelkit::web {
class Application;
class Service;
}  // namespace panelkit::web

namespace panelkit::util {

/// Finds plugin libraries and lets them attach their applications. No plugin is loaded
/// yet: the hooks attach nothing until the plugin loader lands.
class PluginManager {
public:
    /// The manager of this pass; the first call after Unload() builds a new one.
    static PluginManager& Instance();
    /// Drops the plugins, so that the next Instance() scans again.
    void Unload();
    /// Lets every plugin attach its synchronous applications to the root.
    void AttachSynchronousAppsHook(web::Application& root, web::Service& service);
    /// Lets every plugin attach its asynchronous applications to the container.
    void AttachAsynchronousAppsHook(web::Application& container, web::Service& service);
    /// Replaces the six branding texts when a plugin supplied a branding file.
    void PopulateBranding(data::Base::Branding& branding);
    /// Adds the plugins' menu entries that go before the built-in ones.
    void PopulateMenuStartHook(std::vector<data::Menu>& menus);
    /// Adds the plugins' menu entries that go after the built-in ones.
    void PopulateMenuEndHook(std::vector<data::Menu>& menus);
    /// Adds the URLs of the plugins' style sheets below the plugin media root.
    void PopulateStyleSheets(const std::string& pluginMediaRoot, std::vector<std::string>& sheets);
    /// Adds the URLs of the plugins' scripts below the plugin media root.
    void PopulateScripts(const std::string& pluginMediaRoot, std::vector<std::string>& scripts);

private:
    PluginManager() = default;

    static std::mutex lock_;
    static std::unique_ptr<PluginManager> instance_;
    static bool stale_;
};

}  // namespace panelkit::util

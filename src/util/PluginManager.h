// panelkit util: the plugin manager: finds plugin libraries, media and branding on the mounted
// volumes, loads them, and lets the plugins extend menus and attach applications.
#pragma once

#include "data/Base.h"

#include <panelkit/plugin.h>

#include <json/json.h>

#include <mutex>
#include <string>
#include <vector>

namespace panelkit::web {
class Application;
class Service;
}  // namespace panelkit::web

namespace panelkit::util {

/// Process-wide and rebuilt after every reload; its lists are written while it is built and
/// only read afterwards, so worker threads read them without a lock.
class PluginManager {
public:
    /// One loaded plugin.
    using PluginMetaStruct = panelkit::PluginMetaStruct;

    /// The manager, built (and the volumes scanned) on first use and after Unload().
    static PluginManager& Instance();
    /// True when the next Instance() must rebuild the manager.
    static bool& ForceReload();

    /// Deletes every plugin object, closes the libraries and marks the manager for rebuilding.
    void Unload();
    /// Loads "*-panelkit-plugin.so" libraries of the volumes, sorted by file name.
    void LoadLibraries(const std::string& mountDir, const std::vector<std::string>& volumes);
    /// Collects the volumes' style sheets and scripts from "media/head".
    void LoadMedia(const std::string& mountDir, const std::vector<std::string>& volumes);
    /// Loads "*branding.json" files; the last by file name wins.
    void LoadBranding(const std::string& mountDir, const std::vector<std::string>& volumes);
    /// Replaces the page's six branding texts when a branding file was loaded.
    void PopulateBranding(data::Base::Branding& branding);
    /// The plugins' menu entries that go before the built-in ones.
    void PopulateMenuStartHook(std::vector<data::Menu>& menus);
    /// The plugins' menu entries that go after the built-in ones.
    void PopulateMenuEndHook(std::vector<data::Menu>& menus);
    /// Lets every plugin attach its synchronous applications to the root; one plugin's failure spares the others.
    void AttachSynchronousAppsHook(web::Application& root, web::Service& service);
    /// Lets every plugin attach its asynchronous applications; one plugin's failure spares the others.
    void AttachAsynchronousAppsHook(web::Application& container, web::Service& service);
    /// Appends the plugin media root and each style sheet's relative URL.
    void PopulateStyleSheets(const std::string& root, std::vector<std::string>& out);
    /// Appends the plugin media root and each script's relative URL.
    void PopulateScripts(const std::string& root, std::vector<std::string>& out);

    /// The loaded plugins in load order.
    const std::vector<PluginMetaStruct>& plugins() const { return plugins_; }
    /// The relative URLs of the style sheets ("/volume/head/file.css").
    const std::vector<std::string>& styleSheets() const { return styleSheets_; }
    /// The relative URLs of the scripts.
    const std::vector<std::string>& scripts() const { return scripts_; }
    /// The folder that holds a volume's plugin media ("media" below its plugin folder).
    static std::string MediaFolder(const std::string& mountDir, const std::string& volume);

    PluginManager(const PluginManager&) = delete;
    PluginManager& operator=(const PluginManager&) = delete;
    ~PluginManager();

private:
    using AttachSlot = void (PluginInterface::*)(web::Application&, web::Service&, const PluginMetaStruct&);
    /// Calls the slot of every plugin in load order; a plugin that throws is logged and passed over.
    void AttachEach(AttachSlot slot, web::Application& app, web::Service& service, const char* failure);
    PluginManager() = default;

    std::vector<PluginMetaStruct> plugins_;
    std::vector<std::string> styleSheets_;
    std::vector<std::string> scripts_;
    Json::Value branding_;
};

}  // namespace panelkit::util

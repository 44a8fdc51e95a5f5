// panelkit plugin SDK: the interface a plugin library implements and the factory symbol it exports.
//
// A plugin is a shared library named "*-panelkit-plugin.so" in
// $MOUNT_DIR/<volume>/var/www/panelkit/plugins/. panelkit loads it at start and after every
// reload, calls create_panelkit_plugin() once, and deletes the object before unloading the library.
#pragma once

#include <string>
#include <vector>

namespace panelkit {

namespace data {
class Menu;
}
namespace web {
class Application;
class Service;
}  // namespace web

class PluginInterface;

/// What panelkit knows of one loaded plugin.
struct PluginMetaStruct {
    /// The library's path.
    std::string path;
    /// The plugin object (owned by panelkit).
    PluginInterface* plugin = nullptr;
    /// The dlopen handle (owned by panelkit).
    void* handle = nullptr;
    /// The name used in panelkit's log.
    std::string name;
};

/// Implemented by every plugin; every slot may do nothing.
class PluginInterface {
public:
    /// Adds menu entries before the built-in ones.
    virtual void PopulateMenuStart(std::vector<data::Menu>& menus) = 0;
    /// Adds menu entries after the built-in ones.
    virtual void PopulateMenuEnd(std::vector<data::Menu>& menus) = 0;
    /// Attaches page controllers (apps::Base with the plugin's volume name) to the page root.
    /// They run on the pooled workers: one instance per worker, one request at a time.
    virtual void AttachSynchronousApps(web::Application& root, web::Service& service, const PluginMetaStruct& self) = 0;
    /// Attaches applications to the asynchronous container. One instance serves every
    /// worker at once: its handlers must be thread-safe.
    virtual void AttachAsynchronousApps(web::Application& container, web::Service& service,
                                        const PluginMetaStruct& self) = 0;
    virtual ~PluginInterface() = default;
};

}  // namespace panelkit

/// The factory every plugin exports (with C linkage): returns a new plugin object.
extern "C" panelkit::PluginInterface* create_panelkit_plugin();

// Example plugin: its menu entries and the applications it attaches.
#include "ExamplePage.h"
#include "ExampleRpc.h"

#include "data/Menu.h"

#include <panelkit/plugin.h>

#include <memory>

namespace example {

namespace {

// The volume is the folder below the mount directory that holds the library.
std::string VolumeOf(const std::string& libraryPath)
{
    const auto end = libraryPath.find("/var/www/panelkit/plugins/");
    const auto start = end == std::string::npos ? std::string::npos : libraryPath.rfind('/', end - 1);
    return start == std::string::npos ? "" : libraryPath.substr(start + 1, end - start - 1);
}

}  // namespace

class ExamplePlugin : public panelkit::PluginInterface {
public:
    void PopulateMenuStart(std::vector<panelkit::data::Menu>& menus) override
    {
        panelkit::data::Menu group("Example");
        group << panelkit::data::Menu("Example Site", "/example");
        menus.push_back(group);
    }

    void PopulateMenuEnd(std::vector<panelkit::data::Menu>& menus) override
    {
        if (!menus.empty())
            menus.back() << panelkit::data::Menu("Example Help", "/example/help");
    }

    void AttachSynchronousApps(panelkit::web::Application& root, panelkit::web::Service& service,
                               const panelkit::PluginMetaStruct& self) override
    {
        root.attach(std::make_unique<ExamplePage>(service, VolumeOf(self.path)), "example", "/example{1}",
                    "/example(/?|/help)", 1);
    }

    void AttachAsynchronousApps(panelkit::web::Application& container, panelkit::web::Service& service,
                                const panelkit::PluginMetaStruct&) override
    {
        container.attach(std::make_unique<ExampleRpc>(service), "example", "", "/example(.*)", 0);
    }
};

}  // namespace example

extern "C" panelkit::PluginInterface* create_panelkit_plugin()
{
    return new example::ExamplePlugin;
}

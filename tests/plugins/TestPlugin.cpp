// A plugin built by the tests in several variants: its label, its route, and whether attaching its page fails.
#include "apps/Base.h"
#include "data/Menu.h"
#include "web/JsonRpcServer.h"

#include <panelkit/plugin.h>

#include <memory>
#include <stdexcept>

namespace {

class LabelPage : public panelkit::apps::Base {
public:
    explicit LabelPage(panelkit::web::Service& service) : Base(service, PLUGIN_ROUTE)
    {
        mapper().assign("/");
        dispatcher().assign("/?", [this] {
            panelkit::data::Base content;
            Prepare(content);
            content.title = std::string(PLUGIN_LABEL) + " page";
            render("Base", content);
        });
    }
};

class LabelRpc : public panelkit::web::JsonRpcServer {
public:
    explicit LabelRpc(panelkit::web::Service& service) : JsonRpcServer(service)
    {
        bind("label", &LabelRpc::Label, this);
    }
    void Label() { return_result(PLUGIN_LABEL); }
};

class TestPlugin : public panelkit::PluginInterface {
public:
    void PopulateMenuStart(std::vector<panelkit::data::Menu>& menus) override
    {
        panelkit::data::Menu group(std::string(PLUGIN_LABEL) + " Group");
        group << panelkit::data::Menu(PLUGIN_LABEL, "/" PLUGIN_ROUTE);
        menus.push_back(group);
    }
    void PopulateMenuEnd(std::vector<panelkit::data::Menu>& menus) override
    {
        menus.push_back(panelkit::data::Menu(std::string(PLUGIN_LABEL) + " End"));
    }
    void AttachSynchronousApps(panelkit::web::Application& root, panelkit::web::Service& service,
                               const panelkit::PluginMetaStruct&) override
    {
        if (PLUGIN_THROWS)
            throw std::runtime_error("this plugin cannot attach its page");
        root.attach(std::make_unique<LabelPage>(service), PLUGIN_ROUTE, "/" PLUGIN_ROUTE "{1}", "/" PLUGIN_ROUTE "(/?)", 1);
    }
    void AttachAsynchronousApps(panelkit::web::Application& container, panelkit::web::Service& service,
                                const panelkit::PluginMetaStruct&) override
    {
        container.attach(std::make_unique<LabelRpc>(service), PLUGIN_ROUTE, "", "/" PLUGIN_ROUTE "(.*)", 0);
    }
};

}  // namespace

extern "C" panelkit::PluginInterface* create_panelkit_plugin()
{
    return new TestPlugin;
}

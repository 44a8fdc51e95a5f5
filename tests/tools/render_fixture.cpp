// Renders layout pages with the real views and controller base into files, for the browser tests of the
// layout's behaviour before the pages that use every part of it exist.
#include "apps/Base.h"
#include "apps/Network.h"
#include "apps/Settings.h"
#include "data/Base.h"
#include "forms/Base.h"
#include "views/BaseForm.h"
#include "views/BaseFormTabbed.h"
#include "web/Context.h"
#include "web/Request.h"
#include "web/Response.h"
#include "web/Service.h"
#include "web/widgets/Submit.h"
#include "web/widgets/Text.h"
#include "util/Validation.h"
#include "widgets/IpAddress.h"

#include <fstream>
#include <iostream>

using namespace panelkit;

namespace {

struct FixtureForm : forms::Base {
    web::widgets::Text name;
    widgets::IpAddress address;
    web::widgets::Submit save;
    FixtureForm()
    {
        name.name("name");
        name.id("cfg_fix_name");
        name.message("Device Name");
        util::validation::Length(name, 1, 64);
        address.name("address");
        address.id("cfg_fix_ip");
        address.message("IP Address");
        address.error_message("Invalid IP address");
        save.name("save");
        save.id("cfg_fix_save");
        save.value("Save");
        add(name);
        add(address);
        add(save);
    }
};

class FormPage : public views::BaseForm {
public:
    FormPage(std::ostream& out, data::Base& content, const web::Application& app, FixtureForm& form)
        : BaseForm(out, content, app), form_(form)
    {
    }
    void render_page() override
    {
        out_ << "<form method=\"post\" action=\"\"><table class=\"form_table\">";
        render_form(form_);
        out_ << "</table></form>";
    }

private:
    FixtureForm& form_;
};

class TabsPage : public views::BaseFormTabbed {
public:
    TabsPage(std::ostream& out, data::BaseTabbed& content, const web::Application& app, FixtureForm& form)
        : BaseFormTabbed(out, content, app), form_(form)
    {
    }
    void render_page() override
    {
        out_ << "<div id=\"tabcontainer\"><ul><li><a href=\"#tab_config\">Configuration</a></li>"
                "<li><a href=\"#tab_status\">Status</a></li></ul><div id=\"tab_config\">"
                "<form method=\"post\" action=\"\"><table class=\"form_table\">";
        render_form(form_);
        out_ << "</table></form></div><div id=\"tab_status\"><pre class=\"shell_output\">up 3 days</pre></div></div>";
    }

private:
    FixtureForm& form_;
};

void Write(const std::string& path, const std::string& html)
{
    std::ofstream out(path);
    out << html;
    if (!out)
        throw std::runtime_error("cannot write " + path);
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::cerr << "usage: render_fixture OUTPUT_FOLDER\n";
        return 2;
    }
    const std::string folder = argv[1];
    Json::Value config;
    config["service"]["api"] = "http";
    config["panelkit"]["root"]["sync"] = "config";
    config["panelkit"]["media_root"] = "";
    config["panelkit"]["branding"]["banner_text"] = "Field Router";
    web::Service service{web::Settings(config)};
    // The real controllers, so that the menus link where the pages are.
    web::Application root(service);
    root.mapper().root("/config");
    root.attach(std::make_unique<apps::Network>(service), "network", "/network{1}", "/network(/[^/]*$)?", 1);
    apps::Base& app = root.attach(std::make_unique<apps::Settings>(service), "settings", "/settings{1}",
                                  "/settings((?:/[^/]*){0,3}$)", 1);
    web::Request request;
    request.setHead("GET", "/fixtures/form.html", "", "127.0.0.1");
    web::Response response;
    web::Context context(request, response);

    FixtureForm failing;
    failing.name.value("");
    failing.address.value("300.1.2.3");
    failing.validate();
    data::Base formContent;
    app.Prepare(formContent);
    formContent.title = "Form Fixture";
    formContent.message = data::Message::ValidationError();
    std::ostringstream formHtml;
    FormPage(formHtml, formContent, app, failing).render();
    Write(folder + "/form.html", formHtml.str());

    FixtureForm fine;
    fine.name.value("router");
    fine.address.value("192.168.1.1");
    data::BaseTabbed tabsContent;
    app.Prepare(tabsContent);
    tabsContent.title = "Tabs Fixture";
    tabsContent.message = data::Message::SaveOK();
    std::ostringstream tabsHtml;
    TabsPage(tabsHtml, tabsContent, app, fine).render();
    Write(folder + "/tabs.html", tabsHtml.str());
    return 0;
}

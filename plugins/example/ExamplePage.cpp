// Example plugin: a page on the common layout that edits one store key, and its help page.
#include "ExamplePage.h"

#include "util/Pardb.h"
#include "util/Validation.h"
#include "views/BaseForm.h"
#include "web/Response.h"

namespace example {

namespace {

const char kSiteKey[] = "example/site_name";

// The plugin's own view: the layout with the form in the configuration pane.
class SiteView : public panelkit::views::BaseForm {
public:
    SiteView(std::ostream& out, panelkit::data::Base& content, const panelkit::web::Application& app, SiteForm& form)
        : BaseForm(out, content, app), form_(form)
    {
    }
    void render_page() override
    {
        out_ << "<p class=\"example_intro\">The site name is shown by the example plugin's status method.</p>"
                "<form method=\"post\" action=\"\"><table class=\"form_table\">";
        render_form(form_);
        out_ << "</table></form>";
    }

private:
    SiteForm& form_;
};

// A page of text on the layout: no form, nothing stored.
class HelpView : public panelkit::views::Base {
public:
    using Base::Base;
    void render_page() override
    {
        out_ << "<p class=\"example_intro\">The example plugin adds the Example menu, the Site page, which "
                "stores one key, the JSON-RPC method \"example_status\" under /async/example, a style "
                "sheet, a script and the branding of this device.</p>";
    }
};

}  // namespace

SiteForm::SiteForm()
{
    site.name("site");
    site.id("cfg_example_site");
    site.message("Site Name");
    panelkit::util::validation::Length(site, 1, 32);
    save.name("save");
    save.id("cfg_example_save");
    save.value("Save");
    add(site);
    add(save);
}

ExamplePage::ExamplePage(panelkit::web::Service& service, const std::string& volume) : Base(service, volume)
{
    mapper().assign("/");
    mapper().assign("help", "/help");
    dispatcher().assign("/?", [this] { Site(); });
    dispatcher().assign("/help", [this] { Help(); });
}

void ExamplePage::Site()
{
    panelkit::data::Base content;
    SiteForm form;
    Prepare(content);
    content.title = "Example Site";
    if (HttpPost()) {
        if (!ValidateForm(form))
            content.message = panelkit::data::Message::ValidationError();
        else if (panelkit::util::Pardb::Set(kSiteKey, form.site.value()))
            content.message = panelkit::data::Message::SaveOK();
        else
            content.message = panelkit::data::Message::SaveError();
    } else {
        form.site.value(panelkit::util::Pardb::GetString(kSiteKey));
    }
    SiteView(response().out(), content, *this, form).render();
}

void ExamplePage::Help()
{
    panelkit::data::Base content;
    Prepare(content);
    content.title = "Example Help";
    HelpView(response().out(), content, *this).render();
}

}  // namespace example

// Example plugin: its pages, declared: a site page that edits one store key, and a help page.
#include "ExamplePage.h"

namespace example {

namespace {

using panelkit::page::Field;
using panelkit::page::Page;

Page Site()
{
    Page site("site", "Example Site");
    site.Route("/", {"/?"}).Intro("The site name is shown by the example plugin's status method.", "example_intro");
    site.Add(Field::Text("site", "cfg_example_site", "Site Name").Length(1, 32).Key("example/site_name"))
        .Add(Field::Submit("save", "cfg_example_save", "Save"));
    return site;
}

Page Help()
{
    return Page("help", "Example Help")
        .Intro("The example plugin adds the Example menu, the Site page, which stores one key, the JSON-RPC "
               "method \"example_status\" under /async/example, a style sheet, a script and the branding of this "
               "device.",
               "example_intro");
}

}  // namespace

ExamplePage::ExamplePage(panelkit::web::Service& service, const std::string& volume)
    : Base(service, volume), pages_{Site(), Help()}
{
    mapper().assign("/");
    Bind(pages_);
}

}  // namespace example

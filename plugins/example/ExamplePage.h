// Example plugin: its pages, declared: a site page that edits one store key, and a help page.
#pragma once

#include "apps/Base.h"
#include "page/Page.h"

#include <vector>

namespace example {

/// "/example": shows and saves "example/site_name"; "/example/help" explains the plugin.
class ExamplePage : public panelkit::apps::Base {
public:
    /// The pages of the plugin's volume.
    ExamplePage(panelkit::web::Service& service, const std::string& volume);

private:
    // Held by the controller: nothing of the plugin may outlive its library.
    std::vector<panelkit::page::Page> pages_;
};

}  // namespace example

// Example plugin: a page on the common layout that edits one store key.
#pragma once

#include "apps/Base.h"
#include "forms/Base.h"
#include "web/widgets/Submit.h"
#include "web/widgets/Text.h"

namespace example {

/// The site name form.
class SiteForm : public panelkit::forms::Base {
public:
    SiteForm();
    /// The site name, 1 to 32 characters.
    panelkit::web::widgets::Text site;
    /// The save button.
    panelkit::web::widgets::Submit save;
};

/// "/example": shows and saves "example/site_name"; "/example/help" explains it.
class ExamplePage : public panelkit::apps::Base {
public:
    /// A page of the plugin's volume.
    ExamplePage(panelkit::web::Service& service, const std::string& volume);
    /// The site page.
    void Site();
    /// The help page: what the plugin adds and where.
    void Help();
};

}  // namespace example

// panelkit apps: the Settings controller (general information, firmware, reboot, advanced, about).
#pragma once

#include "apps/Base.h"
#include "page/Page.h"

#include <vector>

namespace panelkit::apps {

/// The device's own settings pages below "/settings".
class Settings : public Base {
public:
    /// Routes every page of the table; the bare controller URL shows the General page.
    explicit Settings(web::Service& service);
    /// The pages in menu order.
    static const std::vector<page::Page>& Pages();
    /// The General page (also the page of the bare configuration root).
    void General();
};

}  // namespace panelkit::apps

// panelkit apps: the Settings controller (general information, firmware, reboot, advanced, about).
#pragma once

#include "apps/Base.h"

#include <string>

namespace panelkit::apps {

/// The device's own settings pages below "/settings".
class Settings : public Base {
public:
    /// Registers the routes and mapper names of the Settings pages.
    explicit Settings(web::Service& service);
    /// The General page (also the page of the bare configuration root).
    void General();
};

}  // namespace panelkit::apps

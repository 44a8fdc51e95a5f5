// panelkit apps: the factory page that sets the Wi-Fi regulatory domain.
#pragma once

#include "apps/Base.h"

#include <string>

namespace panelkit::apps {

/// The regulatory-domain page below "/regulatory", without a menu entry.
class Regulatory : public Base {
public:
    /// Registers the Wi-Fi page; name is the application volume ("" for the built-in one).
    Regulatory(web::Service& service, const std::string& name);
};

}  // namespace panelkit::apps

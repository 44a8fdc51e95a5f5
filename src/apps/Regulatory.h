// panelkit apps: the factory page that sets the Wi-Fi regulatory domain.
#pragma once

#include "web/Application.h"

#include <string>

namespace panelkit::apps {

/// The regulatory-domain page below "/regulatory", without a menu entry.
class Regulatory : public web::Application {
public:
    /// Registers the Wi-Fi page; name is the application volume ("" for the built-in one).
    Regulatory(web::Service& service, const std::string& name);
};

}  // namespace panelkit::apps

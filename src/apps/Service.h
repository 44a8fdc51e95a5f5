// panelkit apps: the factory service pages (assembly serial number).
#pragma once

#include "apps/Base.h"

#include <string>

namespace panelkit::apps {

/// Factory pages below "/service", without a menu entry.
class Service : public Base {
public:
    /// Registers the serial-number page; name is the application volume ("" for the built-in one).
    Service(web::Service& service, const std::string& name);
};

}  // namespace panelkit::apps

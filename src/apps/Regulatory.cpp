// panelkit apps: the factory page that sets the Wi-Fi regulatory domain.
#include "apps/Regulatory.h"

#include "apps/RoutePage.h"

namespace panelkit::apps {

Regulatory::Regulatory(web::Service& service, const std::string& name) : Base(service, name)
{
    RoutePage::Bind(*this, {{"wifi", "/wifi", "/wifi", "Wi-Fi Regulatory Domain"}});
}

}  // namespace panelkit::apps

// panelkit apps: the factory service pages (assembly serial number).
#include "apps/Service.h"

#include "apps/RoutePage.h"

namespace panelkit::apps {

Service::Service(web::Service& service, const std::string& name) : Base(service, name)
{
    mapper().assign("/");
    RoutePage::Bind(*this, {
                               {"", "", "/?", "Assembly Serial Number"},
                               {"", "", "", "Assembly Serial Number"},
                               {"assemblysn", "/assemblysn", "/assemblysn", "Assembly Serial Number"},
                           });
}

}  // namespace panelkit::apps

// panelkit apps: the factory service pages (assembly serial number).
#include "apps/Service.h"

#include "page/Page.h"

namespace panelkit::apps {

Service::Service(web::Service& service, const std::string& name) : Base(service, name)
{
    static const std::vector<page::Page> pages = {
        page::Page("assemblysn", "Assembly Serial Number").Route("/assemblysn", {"/?", "/assemblysn"}),
    };
    mapper().assign("/");
    Bind(pages);
}

}  // namespace panelkit::apps

// panelkit apps: the factory page that sets the Wi-Fi regulatory domain.
#include "apps/Regulatory.h"

#include "page/Page.h"

namespace panelkit::apps {

Regulatory::Regulatory(web::Service& service, const std::string& name) : Base(service, name)
{
    static const std::vector<page::Page> pages = {page::Page("wifi", "Wi-Fi Regulatory Domain")};
    Bind(pages);
}

}  // namespace panelkit::apps

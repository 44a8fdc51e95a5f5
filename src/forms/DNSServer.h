// panelkit forms: the DNS server page.
#pragma once

#include "forms/Base.h"
#include "web/widgets/Checkbox.h"
#include "web/widgets/Submit.h"
#include "web/widgets/Text.h"

namespace panelkit::forms {

/// Two name servers, the search suffix and whether they are appended; any text is accepted.
class DNSServer : public Base {
public:
    DNSServer();
    /// Preferred server ("net/lan_dns1").
    web::widgets::Text preferred;
    /// Alternate server ("net/lan_dns2").
    web::widgets::Text alternate;
    /// Search suffix.
    web::widgets::Text suffix;
    /// Append to the system's DNS configuration.
    web::widgets::Checkbox append;
    /// The save button.
    web::widgets::Submit save;
};

}  // namespace panelkit::forms

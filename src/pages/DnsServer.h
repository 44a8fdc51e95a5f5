// panelkit pages: the custom DNS servers page.
#pragma once

#include "page/Page.h"

namespace panelkit::pages {

/// "/network/dns_server": the LAN side's name servers and search suffix, applied at the next reboot.
page::Page DnsServer();

}  // namespace panelkit::pages

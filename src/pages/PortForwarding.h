// panelkit pages: the port forwarding page: preset and user rules, their editing, and the firewall status.
#pragma once

#include "page/Page.h"

namespace panelkit::pages {

/// The port forwarding page.
page::Page PortForwarding();

}  // namespace panelkit::pages

// panelkit pages: the NTP servers page: the time service's switch and upstream servers, and its daemon's state.
#pragma once

#include "page/Page.h"

#include <string>

namespace panelkit::pages {

/// What ntpd's peer listing (`ntpq -pn`, its complaints included) tells: whether it runs, its GPS and PPS
/// references and the peer it is synchronised to, with the listing itself.
Json::Value NtpdStatus(const std::string& peers);

/// "/network/ntp": the time service on or off and four upstream servers; the status of chronyd (with a jump
/// of the system clock) or ntpd, whichever the device runs.
page::Page Ntp();

}  // namespace panelkit::pages

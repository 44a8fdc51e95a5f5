// panelkit pages: the Reboot page: one button, and the waiting page the device's restart is watched from.
#pragma once

#include "page/Page.h"

namespace panelkit::pages {

/// "/settings/reboot": the reboot button. A post answers with the waiting page, then reboots the device.
page::Page Reboot();

}  // namespace panelkit::pages

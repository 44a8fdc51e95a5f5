// panelkit pages: the Firmware page: installed versions, the image upload and the hand-over to the firmware tool.
#pragma once

#include "page/Page.h"

namespace panelkit::pages {

/// "/settings/firmware": the versions, the upload form, and the start of an upgrade.
page::Page Firmware();
/// "/settings/firmware_upgrade_status": the progress page while the tool runs, else back to the Firmware page.
page::Page FirmwareUpgradeStatus();

}  // namespace panelkit::pages

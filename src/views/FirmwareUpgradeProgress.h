// panelkit views: the page shown while the firmware tool runs: the progress bar the tool's status moves.
#pragma once

#include "views/Firmware.h"

namespace panelkit::views {

/// The progress of an upgrade, followed until the tool ends.
class FirmwareUpgradeProgress : public Firmware {
public:
    FirmwareUpgradeProgress(std::ostream& out, page::Content& content, const web::Application& app);
    void render_page() override;
};

}  // namespace panelkit::views

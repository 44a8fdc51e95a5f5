// panelkit views: the page shown while the firmware tool runs: the progress bar the tool's status moves.
#include "views/FirmwareUpgradeProgress.h"

namespace panelkit::views {

FirmwareUpgradeProgress::FirmwareUpgradeProgress(std::ostream& out, page::Content& content,
                                                 const web::Application& app)
    : Firmware(out, content, app)
{
}

void FirmwareUpgradeProgress::render_page()
{
    out_ << "<div id=\"fw_progress_page\"><p class=\"page_intro\">Keep the device powered until the upgrade has "
            "finished; this page follows it and moves on by itself.</p>";
    render_progress_block(true);
    out_ << "</div>\n";
}

}  // namespace panelkit::views

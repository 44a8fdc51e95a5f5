// panelkit views: the page shown while the device reboots; it counts down and returns when the device answers.
#pragma once

#include "page/Content.h"
#include "views/BaseForm.h"

namespace panelkit::views {

/// The waiting page after a reboot was ordered: the page's form, and its facts (the addresses the
/// script compares) as hidden divisions named after them.
class WaitReboot : public BaseForm {
public:
    /// Seconds the script gives the device to come back before it gives up.
    static constexpr int kWaitSeconds = 100;

    /// A view of the Reboot page's content.
    WaitReboot(std::ostream& out, page::Content& content, const web::Application& app);
    void render_scripts() override;
    void render_content() override;

private:
    page::Content& page_;
};

}  // namespace panelkit::views

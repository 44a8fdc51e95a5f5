// panelkit views: the page shown while the device reboots; it counts down and returns when the device answers.
#pragma once

#include "data/Reboot.h"
#include "views/BaseForm.h"

namespace panelkit::views {

/// The waiting page after a reboot was ordered.
class WaitReboot : public BaseForm {
public:
    /// A view of the Reboot page's content.
    WaitReboot(std::ostream& out, data::Reboot& content, const web::Application& app);
    void render_scripts() override;
    void render_content() override;

private:
    data::Reboot& reboot_;
};

}  // namespace panelkit::views

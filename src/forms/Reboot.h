// panelkit forms: the Reboot page's one button.
#pragma once

#include "forms/Base.h"
#include "web/widgets/Submit.h"

namespace panelkit::forms {

/// The reboot button ("Reboot").
class Reboot : public Base {
public:
    Reboot();
    /// The button.
    web::widgets::Submit reboot;
};

}  // namespace panelkit::forms

// panelkit forms: the Reboot page's one button.
#include "forms/Reboot.h"

namespace panelkit::forms {

Reboot::Reboot()
{
    reboot.name("reboot");
    reboot.message("Reboot");
    reboot.value("Reboot");
    reboot.id("cfg_rbt_reboot");
    add(reboot);
}

}  // namespace panelkit::forms

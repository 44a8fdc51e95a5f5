// panelkit pages: the Reboot page: one button, and the waiting page the device's restart is watched from.
#include "pages/Reboot.h"

#include "apps/Base.h"
#include "page/Content.h"
#include "util/Commands.h"
#include "util/DeviceIdentity.h"
#include "util/Pardb.h"
#include "web/widgets/BaseWidget.h"

namespace panelkit::pages {

page::Page Reboot()
{
    using page::Field;
    page::Page reboot("reboot", "Reboot");
    // The form counts as posted only with its button: a post without it just shows the page.
    reboot.Menu("Reboot").View("Reboot").Form("reboot_config", "", "reboot", "Reboot");
    reboot.Add(Field::Submit("reboot", "cfg_rbt_reboot", "Reboot").Configure([](web::widgets::BaseWidget& widget) {
        widget.message("Reboot");
    }));
    // The firmware page sends the browser here once an upgrade has been written.
    reboot.Prepare([](page::Call& call) {
        if (call.app.HttpGet("type") == "finishedUpgrade")
            call.content.message = data::Message::OK("Firmware upgraded successfully, reboot to run new firmware", true);
    });
    reboot.On("reboot", "Reboot", [](page::Call& call) {
        call.content.message = data::Message::Custom("Please wait..rebooting", "info", true);
        // The waiting page compares the address it was reached on with the one the device comes back on.
        call.content.facts = {{"lan_ipaddr", util::GetCurrentIPAddress()},
                              {"pardb_lan_ipaddr", util::Pardb::GetString("net/lan_ipaddr")}};
        // The reply is complete before the reboot starts; its five-second delay lets it reach the browser.
        call.app.render("WaitReboot", call.content);
        util::ForkReboot();
        return true;
    });
    return reboot;
}

}  // namespace panelkit::pages

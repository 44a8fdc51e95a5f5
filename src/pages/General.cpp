// panelkit pages: the General page: identity, device name and live system status.
#include "pages/General.h"

#include "util/DeviceIdentity.h"
#include "util/DevicePath.h"
#include "util/Files.h"

#include <cstdio>
#include <cstdlib>

namespace panelkit::pages {

std::string BoardTemperature(const std::string& reading)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.1f degrees Celsius\n", static_cast<float>(std::atoi(reading.c_str())) / 1000.0f);
    return text;
}

page::Page General()
{
    using page::Field;
    using page::Output;
    page::Page general("general", "General Device Configuration");
    general.Menu("General").View("General").Form("general_config");
    general.Fact("Assembly SN", util::SystemAssemblySN).Fact("Device ID", util::SystemDeviceID);
    general.Add(Field::Text("deviceName", "cfg_grl_device_name", "Device Name").Length(1, 64).Key("net/hostname"))
        .Add(Field::Select("language", "cfg_grl_lang", "Language", {{"English", ""}}).Required().Key("language"))
        .Add(Field::Submit("save", "cfg_grl_save", "Save"));
    general.Diagnostics("general_status",
                        {Output::Command("", "Uname", {"uname", "-a"}, 4096),
                         Output::File("", "Version Info", "/etc/version", 4096)},
                        true);
    general.Status("general_dynamic_status",
                   {Output::Command("date", "Date", {"date"}, 4096), Output::Command("uptime", "Uptime", {"uptime"}, 4096),
                    Output::Computed("boardTemp", "Board Temperature",
                                     [] {
                                         std::string reading;
                                         util::ReadFileHead(util::DevicePath("/sys/class/hwmon/hwmon0/temp1_input"),
                                                            4096, reading);
                                         return BoardTemperature(reading);
                                     }),
                    Output::Command("top", "Top", {"top", "-b", "-n1"}, 4096),
                    Output::Command("processStatus", "Process Status", {"ps", "-ef"}, 10000)})
        .Separated();
    return general;
}

}  // namespace panelkit::pages

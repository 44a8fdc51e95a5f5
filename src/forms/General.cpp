// panelkit forms: the General page: device name and language.
#include "forms/General.h"

#include "util/Validation.h"

namespace panelkit::forms {

General::General()
{
    deviceName.name("deviceName");
    deviceName.id("cfg_grl_device_name");
    deviceName.message("Device Name");
    util::validation::Length(deviceName, 1, 64);
    language.name("language");
    language.id("cfg_grl_lang");
    language.message("Language");
    language.add("English", "");
    util::validation::NonEmpty(language);
    save.name("save");
    save.id("cfg_grl_save");
    save.value("Save");
    add(deviceName);
    add(language);
    add(save);
}

}  // namespace panelkit::forms

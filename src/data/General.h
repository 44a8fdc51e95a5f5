// panelkit data: the General page.
#pragma once

#include "data/StatusPage.h"
#include "forms/General.h"

#include <string>

namespace panelkit::data {

/// The General form, the device's identity and the static status sections.
class General : public StatusPage<forms::General> {
public:
    /// The assembly serial number, read-only.
    std::string assembly_serial_number;
    /// The device ID, read-only.
    std::string device_id;
};

}  // namespace panelkit::data

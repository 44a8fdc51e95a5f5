// panelkit data: the Reboot page and the waiting page shown while the device restarts.
#pragma once

#include "data/Base.h"
#include "forms/Reboot.h"

#include <string>

namespace panelkit::data {

/// The Reboot page: its one-button form, the addresses the waiting page compares, and the wait.
class Reboot : public Base {
public:
    /// The reboot button.
    forms::Reboot form;
    /// The address the device answers on now.
    std::string current_address;
    /// The LAN address stored for after the restart.
    std::string lan_address;
    /// Seconds the waiting page waits for the device to come back.
    int wait_time = 100;
};

}  // namespace panelkit::data

// panelkit forms: the Ethernet page: addressing mode, address, netmask, gateway and advertised speeds.
#pragma once

#include "forms/Base.h"
#include "web/widgets/Select.h"
#include "web/widgets/SelectMultiple.h"
#include "web/widgets/Submit.h"
#include "widgets/IpAddress.h"

namespace panelkit::forms {

/// In DHCP mode the addresses may stay empty; in static mode they are required.
class Ethernet1 : public Base {
public:
    Ethernet1();
    /// The four speed options with their mask bits, in order.
    static const char* const kSpeeds[4];
    /// Adds the four speed options, each selected when its bit is set in the mask.
    void AddSpeeds(int mask);
    /// The mask of the selected speeds.
    int SpeedMask() const;

    bool validate() override;

    /// "static" or "dhcp".
    web::widgets::Select addressMode;
    /// The address.
    widgets::IpAddress ipAddress;
    /// The netmask, /30 down to /8.
    web::widgets::Select netmask;
    /// The gateway.
    widgets::IpAddress gateway;
    /// The advertised speeds.
    web::widgets::SelectMultiple speedsAvailable;
    /// The save button.
    web::widgets::Submit saveButton;
};

}  // namespace panelkit::forms

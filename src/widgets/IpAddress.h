// panelkit widgets: a dotted-quad IPv4 address field, optionally allowed to stay empty.
#pragma once

#include "web/widgets/RegexField.h"

#include <string>

namespace panelkit::widgets {

/// An IPv4 address input checked by a strict expression (each octet 0 to 255).
class IpAddress : public web::widgets::RegexField {
public:
    IpAddress();
    /// Accepts an empty value too, or not.
    void SetAllowEmpty(bool allow);
    /// True when an empty value is accepted.
    bool AllowEmpty() const { return allowEmpty_; }
    /// The expression, with or without the empty alternative.
    static const std::string& RegexString(bool allowEmpty);

private:
    bool allowEmpty_ = false;
};

}  // namespace panelkit::widgets

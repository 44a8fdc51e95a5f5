// panelkit widgets: a dotted-quad IPv4 address field, optionally allowed to stay empty.
#include "widgets/IpAddress.h"

namespace panelkit::widgets {

IpAddress::IpAddress()
{
    regex(RegexString(false));
}

void IpAddress::SetAllowEmpty(bool allow)
{
    allowEmpty_ = allow;
    regex(RegexString(allow));
}

const std::string& IpAddress::RegexString(bool allowEmpty)
{
    static const std::string strict =
        "^(([0-9]|[0-9][0-9]|1[0-9][0-9]|2[0-4][0-9]|25[0-5])\\.){3}"
        "([0-9]|[0-9][0-9]|1[0-9][0-9]|2[0-4][0-9]|25[0-5])$";
    static const std::string orEmpty = "(" + strict + "|^$)";
    return allowEmpty ? orEmpty : strict;
}

}  // namespace panelkit::widgets

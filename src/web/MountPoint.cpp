// panelkit web layer: where in the URL space an application tree is mounted.
#include "web/MountPoint.h"

namespace panelkit::web {

MountPoint::MountPoint(const std::string& expression, int group)
    : expression_(expression), group_(group)
{
}

bool MountPoint::match(const std::string& path, std::string& url) const
{
    Poco::RegularExpression::MatchVec matches;
    if (!expression_.matches(path, matches))
        return false;
    url = Pattern::Group(path, matches, group_);
    return true;
}

}  // namespace panelkit::web

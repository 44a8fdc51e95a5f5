// panelkit web layer: where in the URL space an application tree is mounted.
#include "web/MountPoint.h"

namespace panelkit::web {

MountPoint::MountPoint(const std::string& expression, int group)
    : expression_(std::make_shared<Poco::RegularExpression>("^(?:" + expression + ")$",
                                                            Poco::RegularExpression::RE_DOLLAR_ENDONLY)),
      group_(group)
{
}

bool MountPoint::match(const std::string& path, std::string& url) const
{
    Poco::RegularExpression::MatchVec matches;
    if (expression_->match(path, 0, matches) == 0)
        return false;
    const auto index = static_cast<std::size_t>(group_);
    const bool found = index < matches.size() && matches[index].offset != std::string::npos;
    url = found ? path.substr(matches[index].offset, matches[index].length) : std::string();
    return true;
}

}  // namespace panelkit::web

// panelkit web layer: a Perl-style expression that must match a whole text.
#include "web/Pattern.h"

namespace panelkit::web {

Pattern::Pattern(const std::string& expression)
    : expression_(expression),
      compiled_(std::make_shared<const Poco::RegularExpression>("^(?:" + expression + ")$",
                                                                Poco::RegularExpression::RE_DOLLAR_ENDONLY))
{
}

bool Pattern::matches(const std::string& text) const
{
    Poco::RegularExpression::MatchVec groups;
    return matches(text, groups);
}

bool Pattern::matches(const std::string& text, Poco::RegularExpression::MatchVec& groups) const
{
    // The MatchVec form, because the boolean form never matches an empty text.
    return compiled_->match(text, 0, groups) > 0;
}

std::string Pattern::Group(const std::string& text, const Poco::RegularExpression::MatchVec& groups, int index)
{
    const auto i = static_cast<std::size_t>(index);
    if (index < 0 || i >= groups.size() || groups[i].offset == std::string::npos)
        return "";
    return text.substr(groups[i].offset, groups[i].length);
}

}  // namespace panelkit::web

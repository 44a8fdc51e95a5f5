// panelkit web layer: a Perl-style expression that must match a whole text.
#pragma once

#include <Poco/RegularExpression.h>

#include <memory>
#include <string>

namespace panelkit::web {

/// An expression anchored at both ends; immutable, so one instance serves many threads.
class Pattern {
public:
    /// Compiles the expression; throws Poco::RegularExpressionException when it is malformed.
    explicit Pattern(const std::string& expression);
    /// True when the whole text matches (the empty text too, where the expression allows it).
    bool matches(const std::string& text) const;
    /// Like matches(), and fills the groups' match positions (group 0 is the whole text).
    bool matches(const std::string& text, Poco::RegularExpression::MatchVec& groups) const;
    /// The text of a group after a match, "" when the group took no part.
    static std::string Group(const std::string& text, const Poco::RegularExpression::MatchVec& groups, int index);
    /// The expression as given.
    const std::string& expression() const { return expression_; }

private:
    std::string expression_;
    std::shared_ptr<const Poco::RegularExpression> compiled_;
};

}  // namespace panelkit::web

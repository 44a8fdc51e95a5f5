// panelkit web layer: routes a URL to the first handler whose expression matches it whole.
#include "web/Dispatcher.h"

namespace panelkit::web {

void Dispatcher::add(const std::string& expression, std::vector<int> groups, Handler handler)
{
    entries_.push_back({Pattern(expression), std::move(groups), std::move(handler)});
}

void Dispatcher::assign(const std::string& expression, std::function<void()> handler)
{
    add(expression, {}, [handler](const std::vector<std::string>&) { handler(); });
}

void Dispatcher::assign(const std::string& expression, std::function<void(std::string)> handler, int g1)
{
    add(expression, {g1}, [handler](const std::vector<std::string>& v) { handler(v[0]); });
}

void Dispatcher::assign(const std::string& expression, std::function<void(std::string, std::string)> handler, int g1,
                        int g2)
{
    add(expression, {g1, g2}, [handler](const std::vector<std::string>& v) { handler(v[0], v[1]); });
}

void Dispatcher::assign(const std::string& expression,
                        std::function<void(std::string, std::string, std::string)> handler, int g1, int g2, int g3)
{
    add(expression, {g1, g2, g3}, [handler](const std::vector<std::string>& v) { handler(v[0], v[1], v[2]); });
}

void Dispatcher::assign(const std::string& expression,
                        std::function<void(std::string, std::string, std::string, std::string)> handler, int g1,
                        int g2, int g3, int g4)
{
    add(expression, {g1, g2, g3, g4},
        [handler](const std::vector<std::string>& v) { handler(v[0], v[1], v[2], v[3]); });
}

bool Dispatcher::dispatch(const std::string& url) const
{
    Poco::RegularExpression::MatchVec matches;
    for (const auto& entry : entries_) {
        if (!entry.expression.matches(url, matches))
            continue;
        std::vector<std::string> values;
        values.reserve(entry.groups.size());
        for (int group : entry.groups)
            values.push_back(Pattern::Group(url, matches, group));
        entry.handler(values);
        return true;
    }
    return false;
}

}  // namespace panelkit::web

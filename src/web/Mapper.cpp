// panelkit web layer: named URL patterns of one application, for building links.
#include "web/Mapper.h"

#include "web/Error.h"

#include <cctype>

namespace panelkit::web {

void Mapper::assign(const std::string& name, const std::string& pattern)
{
    patterns_[name] = pattern;
}

void Mapper::assign(const std::string& pattern)
{
    patterns_[""] = pattern;
}

const std::string* Mapper::find(const std::string& name) const
{
    auto it = patterns_.find(name);
    return it == patterns_.end() ? nullptr : &it->second;
}

std::string Mapper::Expand(const std::string& pattern, const std::vector<std::string>& params)
{
    std::string out;
    out.reserve(pattern.size() + 32);
    std::size_t done = 0;
    for (auto open = pattern.find('{'); open != std::string::npos; open = pattern.find('{', open + 1)) {
        const auto close = pattern.find('}', open);
        if (close == std::string::npos)
            break;
        std::size_t index = 0;
        bool numeric = close > open + 1;
        for (auto i = open + 1; numeric && i < close; ++i) {
            numeric = std::isdigit(static_cast<unsigned char>(pattern[i])) != 0;
            index = index * 10 + static_cast<std::size_t>(pattern[i] - '0');
        }
        if (!numeric)
            continue;
        if (index == 0 || index > params.size())
            throw Error("URL pattern " + pattern + " needs parameter {" + pattern.substr(open + 1, close - open - 1) + "}");
        out.append(pattern, done, open - done);
        out += params[index - 1];
        done = close + 1;
        open = close;
    }
    out.append(pattern, done, std::string::npos);
    return out;
}

}  // namespace panelkit::web

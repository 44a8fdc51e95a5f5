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
    out.reserve(pattern.size());
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        const auto close = pattern.find('}', i);
        if (pattern[i] != '{' || close == std::string::npos || close == i + 1) {
            out.push_back(pattern[i]);
            continue;
        }
        const std::string digits = pattern.substr(i + 1, close - i - 1);
        bool numeric = true;
        for (char c : digits)
            numeric = numeric && std::isdigit(static_cast<unsigned char>(c));
        if (!numeric) {
            out.push_back(pattern[i]);
            continue;
        }
        const std::size_t index = std::stoul(digits);
        if (index == 0 || index > params.size())
            throw Error("URL pattern " + pattern + " needs parameter {" + digits + "}");
        out += params[index - 1];
        i = close;
    }
    return out;
}

}  // namespace panelkit::web

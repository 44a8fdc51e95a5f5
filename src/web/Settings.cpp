// panelkit web layer: the JSON configuration of the process and its command-line overrides.
#include "web/Settings.h"

#include <fstream>
#include <memory>
#include <sstream>

namespace panelkit::web {

namespace {

bool ParseJson(const std::string& text, Json::Value& out, std::string& errors)
{
    Json::CharReaderBuilder builder;
    builder["collectComments"] = false;
    std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    return reader->parse(text.data(), text.data() + text.size(), &out, &errors);
}

// "--service.port=8123" gives a number, "--file_server.enable=true" a boolean,
// anything that is not a JSON scalar stays the text it was.
Json::Value OverrideValue(const std::string& text)
{
    Json::Value parsed;
    std::string errors;
    if (ParseJson(text, parsed, errors) && !parsed.isObject() && !parsed.isArray())
        return parsed;
    return Json::Value(text);
}

}  // namespace

Settings::Settings(Json::Value root) : root_(std::move(root))
{
    if (!root_.isObject())
        throw SettingsError("configuration: the top level must be a JSON object");
}

Settings Settings::FromFile(const std::string& path)
{
    std::ifstream in(path);
    if (!in)
        throw SettingsError("configuration: cannot open " + path);
    std::stringstream text;
    text << in.rdbuf();
    Json::Value root;
    std::string errors;
    if (!ParseJson(text.str(), root, errors))
        throw SettingsError("configuration: " + path + ": " + errors);
    return Settings(std::move(root));
}

Settings Settings::FromCommandLine(int argc, const char* const argv[])
{
    Settings settings;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg == "-c") {
            if (i + 1 >= argc)
                throw SettingsError("command line: -c needs a file name");
            Settings file = FromFile(argv[++i]);
            for (const auto& name : file.root_.getMemberNames())
                settings.root_[name] = file.root_[name];
            continue;
        }
        const auto eq = arg.find('=');
        if (arg.rfind("--", 0) != 0 || eq == std::string::npos || eq == 2)
            throw SettingsError("command line: unknown argument " + arg);
        settings.set(arg.substr(2, eq - 2), OverrideValue(arg.substr(eq + 1)));
    }
    return settings;
}

const Json::Value* Settings::find(const std::string& path) const
{
    const Json::Value* node = &root_;
    std::size_t start = 0;
    while (start <= path.size()) {
        const auto dot = path.find('.', start);
        const std::string name = path.substr(start, dot == std::string::npos ? std::string::npos : dot - start);
        if (!node->isObject() || !node->isMember(name))
            return nullptr;
        node = &(*node)[name];
        if (dot == std::string::npos)
            return node;
        start = dot + 1;
    }
    return nullptr;
}

const Json::Value& Settings::at(const std::string& path) const
{
    const Json::Value* value = find(path);
    if (!value)
        throw SettingsError("Value not found: " + path);
    return *value;
}

std::string Settings::get(const std::string& path, const std::string& fallback) const
{
    const Json::Value* value = find(path);
    return value && value->isString() ? value->asString() : fallback;
}

std::string Settings::get(const std::string& path, const char* fallback) const
{
    return get(path, std::string(fallback));
}

long long Settings::get(const std::string& path, long long fallback) const
{
    const Json::Value* value = find(path);
    return value && value->isIntegral() ? value->asLargestInt() : fallback;
}

int Settings::get(const std::string& path, int fallback) const
{
    const Json::Value* value = find(path);
    return value && value->isInt() ? value->asInt() : fallback;
}

bool Settings::get(const std::string& path, bool fallback) const
{
    const Json::Value* value = find(path);
    return value && value->isBool() ? value->asBool() : fallback;
}

void Settings::set(const std::string& path, const Json::Value& value)
{
    Json::Value* node = &root_;
    std::size_t start = 0;
    for (;;) {
        const auto dot = path.find('.', start);
        const std::string name = path.substr(start, dot == std::string::npos ? std::string::npos : dot - start);
        if (name.empty())
            throw SettingsError("configuration: bad key " + path);
        if (!node->isObject())
            *node = Json::Value(Json::objectValue);
        node = &(*node)[name];
        if (dot == std::string::npos)
            break;
        start = dot + 1;
    }
    *node = value;
}

}  // namespace panelkit::web

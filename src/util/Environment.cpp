// panelkit util: environment variables, and settings the environment may override.
#include "util/Environment.h"

#include "web/Settings.h"

#include <cstdlib>

namespace panelkit::util {

std::string GetEnv(const std::string& name)
{
    const char* value = std::getenv(name.c_str());
    return value ? std::string(value) : std::string();
}

std::string EnvOrSettings(const std::string& envName, const std::string& path, const web::Settings& settings)
{
    const std::string env = GetEnv(envName);
    if (!env.empty())
        return env;
    const Json::Value* value = settings.find(path);
    return value && value->isString() ? value->asString() : std::string();
}

}  // namespace panelkit::util

// panelkit util: environment variables, and settings the environment may override.
#pragma once

#include <string>

namespace panelkit::web {
class Settings;
}

namespace panelkit::util {

/// The environment variable, "" when not set.
std::string GetEnv(const std::string& name);
/// The environment variable when set and not empty, else the string at the settings path, else "".
std::string EnvOrSettings(const std::string& envName, const std::string& path, const web::Settings& settings);

}  // namespace panelkit::util

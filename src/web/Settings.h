// panelkit web layer: the JSON configuration of the process and its command-line overrides.
#pragma once

#include "web/Error.h"

#include <json/json.h>

#include <string>

namespace panelkit::web {

/// Thrown for a missing or unreadable setting, or a bad command line.
class SettingsError : public Error {
public:
    using Error::Error;
};

/// Configuration values addressed by dotted paths ("service.port").
class Settings {
public:
    Settings() = default;
    /// Wraps an already parsed configuration object.
    explicit Settings(Json::Value root);

    /// Reads "-c FILE" and "--KEY=VALUE" arguments; later arguments win.
    static Settings FromCommandLine(int argc, const char* const argv[]);
    /// Parses a JSON configuration file; throws SettingsError when it cannot.
    static Settings FromFile(const std::string& path);

    /// The value at a dotted path; throws SettingsError when it is missing.
    const Json::Value& at(const std::string& path) const;
    /// The value at a dotted path, or nullptr.
    const Json::Value* find(const std::string& path) const;
    /// The string at a path, or the default when missing or not a string.
    std::string get(const std::string& path, const std::string& fallback) const;
    /// The string at a path, or the default when missing or not a string.
    std::string get(const std::string& path, const char* fallback) const;
    /// The integer at a path, or the default when missing or not an integer.
    long long get(const std::string& path, long long fallback) const;
    /// The integer at a path, or the default when missing or not an integer.
    int get(const std::string& path, int fallback) const;
    /// The boolean at a path, or the default when missing or not a boolean.
    bool get(const std::string& path, bool fallback) const;
    /// Sets the value at a dotted path, creating the objects on the way.
    void set(const std::string& path, const Json::Value& value);
    /// The whole configuration object.
    const Json::Value& root() const { return root_; }

private:
    Json::Value root_{Json::objectValue};
};

}  // namespace panelkit::web

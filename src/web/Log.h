// panelkit web layer: leveled log records with module, source file and line, sent to stderr and syslog.
#pragma once

#include <sstream>
#include <string>

namespace panelkit::web {

class Settings;

/// Log levels; a smaller number is more severe.
enum class Level { Error = 30, Warning = 40, Info = 60, Debug = 70 };

/// The process-wide log sinks and level filter.
class Log {
public:
    /// Applies the "logging" section: "level" ("error", "warning", "info", "debug"),
    /// "stderr" (default true) and "syslog" (default false).
    static void Configure(const Settings& settings);
    /// True when records of this level pass the filter.
    static bool Enabled(Level level);
    /// Sends one record to every enabled sink.
    static void Write(Level level, const char* module, const char* file, int line, const std::string& text);
    /// The level's name as it appears in records ("error", ...).
    static const char* Name(Level level);
    /// Parses a level name; false when the name is unknown.
    static bool Parse(const std::string& name, Level& level);
};

/// One record being composed; it is written when it goes out of scope.
class Record {
public:
    /// Starts a record for the given level, module and source position.
    Record(Level level, const char* module, const char* file, int line);
    ~Record();
    Record(const Record&) = delete;
    Record& operator=(const Record&) = delete;
    /// The stream the record's text is written to.
    std::ostream& stream() { return text_; }

private:
    Level level_;
    const char* module_;
    const char* file_;
    int line_;
    std::ostringstream text_;
};

}  // namespace panelkit::web

// A loop rather than an if, so that the macro is safe inside an unbraced if/else.
#define PK_LOG(level) \
    for (bool pk_log_once = ::panelkit::web::Log::Enabled(level); pk_log_once; pk_log_once = false) \
        ::panelkit::web::Record(level, "panelkit", __FILE__, __LINE__).stream()
#define PK_ERROR() PK_LOG(::panelkit::web::Level::Error)
#define PK_WARNING() PK_LOG(::panelkit::web::Level::Warning)
#define PK_INFO() PK_LOG(::panelkit::web::Level::Info)
#define PK_DEBUG() PK_LOG(::panelkit::web::Level::Debug)

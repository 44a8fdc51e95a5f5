// panelkit web layer: leveled log records with module, source file and line, sent to stderr and syslog.
#include "web/Log.h"

#include "web/Settings.h"

#include <atomic>
#include <cstdio>
#include <ctime>
#include <mutex>
#include <syslog.h>

namespace panelkit::web {

namespace {

std::atomic<int> g_level{static_cast<int>(Level::Info)};
std::atomic<bool> g_stderr{true};
std::atomic<bool> g_syslog{false};
std::mutex g_writeLock;

int SyslogPriority(Level level)
{
    switch (level) {
    case Level::Error: return LOG_ERR;
    case Level::Warning: return LOG_WARNING;
    case Level::Info: return LOG_INFO;
    case Level::Debug: return LOG_DEBUG;
    }
    return LOG_INFO;
}

const char* BaseName(const char* path)
{
    const char* base = path;
    for (const char* p = path; *p; ++p)
        if (*p == '/')
            base = p + 1;
    return base;
}

}  // namespace

const char* Log::Name(Level level)
{
    switch (level) {
    case Level::Error: return "error";
    case Level::Warning: return "warning";
    case Level::Info: return "info";
    case Level::Debug: return "debug";
    }
    return "info";
}

bool Log::Parse(const std::string& name, Level& level)
{
    for (Level candidate : {Level::Error, Level::Warning, Level::Info, Level::Debug}) {
        if (name == Name(candidate)) {
            level = candidate;
            return true;
        }
    }
    return false;
}

void Log::Configure(const Settings& settings)
{
    Level level = Level::Info;
    if (!Parse(settings.get("logging.level", "info"), level))
        level = Level::Info;
    g_level = static_cast<int>(level);
    g_stderr = settings.get("logging.stderr", true);
    g_syslog = settings.get("logging.syslog", false);
}

bool Log::Enabled(Level level)
{
    return static_cast<int>(level) <= g_level.load(std::memory_order_relaxed);
}

void Log::Write(Level level, const char* module, const char* file, int line, const std::string& text)
{
    const char* base = BaseName(file);
    std::lock_guard<std::mutex> lock(g_writeLock);
    if (g_stderr) {
        std::time_t now = std::time(nullptr);
        std::tm local{};
        localtime_r(&now, &local);
        char stamp[32];
        std::strftime(stamp, sizeof stamp, "%Y-%m-%d %H:%M:%S", &local);
        std::fprintf(stderr, "%s; %s, %s: %s (%s:%d)\n", stamp, module, Name(level), text.c_str(), base, line);
        std::fflush(stderr);
    }
    if (g_syslog)
        ::syslog(SyslogPriority(level), "%s, %s: %s (%s:%d)", module, Name(level), text.c_str(), base, line);
}

Record::Record(Level level, const char* module, const char* file, int line)
    : level_(level), module_(module), file_(file), line_(line)
{
}

Record::~Record()
{
    Log::Write(level_, module_, file_, line_, text_.str());
}

}  // namespace panelkit::web

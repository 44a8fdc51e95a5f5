// panelkit web layer: exceptions that remember where they were thrown.
#include "web/Error.h"

#include <cstdlib>
#include <execinfo.h>

namespace panelkit::web {

namespace {
constexpr int kMaxFrames = 64;
}

Error::Error(const std::string& what) : std::runtime_error(what), frames_(kMaxFrames)
{
    frames_.resize(static_cast<std::size_t>(::backtrace(frames_.data(), kMaxFrames)));
}

std::vector<std::string> Error::StackTrace() const
{
    std::vector<std::string> lines;
    if (frames_.empty())
        return lines;
    char** symbols = ::backtrace_symbols(frames_.data(), static_cast<int>(frames_.size()));
    if (!symbols)
        return lines;
    lines.assign(symbols, symbols + frames_.size());
    std::free(symbols);
    return lines;
}

}  // namespace panelkit::web

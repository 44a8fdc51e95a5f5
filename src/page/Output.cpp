// panelkit page: a block of command output declared once: its reply member, its heading and how it is made.
#include "page/Output.h"

#include "util/Commands.h"
#include "util/DevicePath.h"
#include "util/Files.h"

#include <cerrno>
#include <cstring>

namespace panelkit::page {

Output Output::Command(const std::string& member, const std::string& title, std::vector<std::string> argv,
                       std::size_t limit)
{
    return {member, title, [argv = std::move(argv), limit] { return util::Run(argv, limit); }};
}

namespace {

std::string Cat(const std::string& devicePath, std::size_t limit, bool withError)
{
    std::string text;
    if (!util::ReadFileHead(util::DevicePath(devicePath), limit + 1, text))
        return withError ? "cat: " + devicePath + ": " + std::strerror(errno) + "\n" : "";
    return util::Bounded(std::move(text), limit);
}

}  // namespace

Output Output::File(const std::string& member, const std::string& title, const std::string& devicePath,
                    std::size_t limit)
{
    return {member, title, [devicePath, limit] { return Cat(devicePath, limit, false); }};
}

Output Output::FileOrError(const std::string& member, const std::string& title, const std::string& devicePath,
                           std::size_t limit)
{
    return {member, title, [devicePath, limit] { return Cat(devicePath, limit, true); }};
}

Output Output::Computed(const std::string& member, const std::string& title, std::function<std::string()> make)
{
    return {member, title, std::move(make)};
}

}  // namespace panelkit::page

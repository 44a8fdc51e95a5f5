// panelkit page: a block of command output declared once: its reply member, its heading and how it is made.
#include "page/Output.h"

#include "util/Commands.h"
#include "util/DevicePath.h"
#include "util/Files.h"

namespace panelkit::page {

namespace {

Output Block(const std::string& member, const std::string& title, std::function<std::string()> make)
{
    Output block;
    block.member = member;
    block.title = title;
    block.make = std::move(make);
    return block;
}

}  // namespace

Output Output::Command(const std::string& member, const std::string& title, std::vector<std::string> argv,
                       std::size_t limit)
{
    return Block(member, title, [argv = std::move(argv), limit] { return util::Run(argv, limit); });
}

Output Output::File(const std::string& member, const std::string& title, const std::string& devicePath,
                    std::size_t limit)
{
    return Block(member, title, [devicePath, limit] {
        // Without `2>&1` cat's complaint about a missing file goes nowhere.
        std::string text;
        util::ReadFileHead(util::DevicePath(devicePath), limit + 1, text);
        return util::Bounded(std::move(text), limit);
    });
}

Output Output::FileOrError(const std::string& member, const std::string& title, const std::string& devicePath,
                           std::size_t limit)
{
    return Block(member, title, [devicePath, limit] { return util::CatFile(util::DevicePath(devicePath), limit); });
}

Output Output::Computed(const std::string& member, const std::string& title, std::function<std::string()> make)
{
    return Block(member, title, std::move(make));
}

}  // namespace panelkit::page

// panelkit page: a block of command output declared once: its reply member, its heading and how it is made.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace panelkit::page {

/// One block of a status tab or of a page's diagnostics.
struct Output {
    /// A program run with its arguments (no shell), at most limit bytes of what it prints.
    static Output Command(const std::string& member, const std::string& title, std::vector<std::string> argv,
                          std::size_t limit);
    /// What `cat` prints for a device file on its standard output ("" when it cannot be read), at most limit bytes.
    static Output File(const std::string& member, const std::string& title, const std::string& devicePath,
                       std::size_t limit);
    /// The same with cat's complaint when the file cannot be read (`2>&1`).
    static Output FileOrError(const std::string& member, const std::string& title, const std::string& devicePath,
                              std::size_t limit);
    /// Text made in-process.
    static Output Computed(const std::string& member, const std::string& title, std::function<std::string()> make);
    /// A member of a reply the page makes at once (Page::StatusFrom), shown under the title.
    static Output Member(const std::string& member, const std::string& title);

    /// The member of the JSON-RPC reply ("" for a block made while the page renders).
    std::string member;
    /// The heading shown over the block.
    std::string title;
    /// Makes the text (unused when the page makes its status reply at once, Page::StatusFrom).
    std::function<std::string()> make;
    /// A button the status script shows under the block, in a form posted to the page ("" id for none).
    std::string buttonId;
    std::string buttonName;
    std::string buttonValue;
    /// The note shown next to the button.
    std::string buttonNote;

    /// Shows a button under the block: posting it sends name=value to the page.
    Output& Button(const std::string& id, const std::string& name, const std::string& value, const std::string& note);
};

}  // namespace panelkit::page

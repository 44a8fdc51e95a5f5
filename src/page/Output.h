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

    /// The member of the JSON-RPC reply ("" for a block made while the page renders).
    std::string member;
    /// The heading shown over the block.
    std::string title;
    /// Makes the text.
    std::function<std::string()> make;
};

}  // namespace panelkit::page

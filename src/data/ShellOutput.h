// panelkit data: the captured output of diagnostic commands shown on status pages.
#pragma once

#include <string>

namespace panelkit::data {

/// Command output shown on a page.
struct ShellOutput {
    /// One command's heading and captured text.
    struct Section {
        /// A section with its heading and text.
        Section(std::string title, std::string output) : title(std::move(title)), output(std::move(output)) {}
        /// The heading ("Uname").
        std::string title;
        /// The captured text.
        std::string output;
    };
};

}  // namespace panelkit::data

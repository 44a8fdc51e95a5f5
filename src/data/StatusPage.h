// panelkit data: a tabbed settings page with its form and the command output it shows.
#pragma once

#include "data/Base.h"
#include "data/ShellOutput.h"

#include <vector>

namespace panelkit::data {

/// A tabbed page holding its form (by value) and diagnostic sections.
template <class Form>
class StatusPage : public BaseTabbed {
public:
    /// The page's form.
    Form form;
    /// Command outputs shown on the page, in order.
    std::vector<ShellOutput::Section> sections;
};

}  // namespace panelkit::data

// panelkit page: what a declared page renders: the common content, its forms, facts and command output.
#pragma once

#include "data/Base.h"
#include "data/ShellOutput.h"
#include "page/Form.h"

#include <json/value.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace panelkit::page {

class Page;

/// The content record of every declared page.
class Content : public data::BaseTabbed {
public:
    /// Content for the page with a fresh form per declared form.
    explicit Content(const Page& page);

    /// The declaration being served.
    const Page& page;
    /// One form per declared form, in order.
    std::vector<std::unique_ptr<Form>> forms;
    /// The index of the form the request posted, -1 when none.
    int posted = -1;
    /// Read-only rows before the first form's fields.
    std::vector<std::pair<std::string, std::string>> facts;
    /// Command output made while the page renders.
    std::vector<data::ShellOutput::Section> sections;
    /// Values of the page's own for its view and script (published to the script as page data "page").
    Json::Value values{Json::objectValue};
    /// A hook answered the request itself (another view, a redirect): nothing more is rendered.
    bool answered = false;
};

}  // namespace panelkit::page

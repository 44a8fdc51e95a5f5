// panelkit views: a page with a configuration tab (a form) and a status tab that its script fills.
#pragma once

#include "data/StatusPage.h"
#include "views/BaseFormTabbed.h"

namespace panelkit::views {

/// Ids and script of one status page.
struct StatusPageParts {
    /// The configuration tab's inner div ("ethernet1_config").
    const char* configId;
    /// The status tab's div the script fills ("ethernet1_status").
    const char* statusId;
    /// The JSON-RPC method the status tab polls.
    const char* method;
    /// The page's script below the media root ("/js/ethernet1.js").
    const char* script;
};

/// Two tabs, "Configuration" and "Status"; the status tab shows the spinner until the first reply.
class StatusPage : public BaseFormTabbed {
public:
    /// A view of the content, whose form goes into the configuration tab.
    StatusPage(std::ostream& out, data::BaseTabbed& content, const web::Application& app, const web::Form& form,
               const StatusPageParts& parts);

    void render_page() override;
    void render_scripts() override;
    /// The configuration tab: the form in a table.
    virtual void render_config_tab();
    /// The status tab: the div the script fills.
    virtual void render_status_tab();

protected:
    /// Sections of command output, each a heading and a pre block.
    void render_sections(const std::vector<data::ShellOutput::Section>& sections);
    /// Rows written before the form's widgets in the configuration table.
    virtual void render_config_rows() {}

    const web::Form& form_;
    StatusPageParts parts_;
};

}  // namespace panelkit::views

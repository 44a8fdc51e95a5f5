// panelkit views: the default view of a declared page: a form, a form with a status tab, or a tab per form.
#pragma once

#include "page/Content.h"
#include "views/BaseForm.h"

namespace panelkit::views {

/// Renders any declared page from its declaration; a page with markup of its own derives from it.
class PageView : public BaseForm {
public:
    /// A view of a declared page's content.
    PageView(std::ostream& out, page::Content& content, const web::Application& app);

    void render_page() override;
    void render_scripts() override;
    /// The division of one form: its rows and those of its parts in a table inside a post form.
    virtual void render_config_tab(std::size_t index);
    /// The tab of a form on a page of several: the form's division, then the status when it shows there.
    virtual void render_form_tab(std::size_t index);
    /// The status tab: the division the status script fills, and the page's command output.
    virtual void render_status_tab();

protected:
    /// Sections of command output, each a heading and a pre block.
    void render_sections(const std::vector<data::ShellOutput::Section>& sections);
    /// The read-only rows before the first form's fields.
    void render_facts();

    page::Content& page_;
};

}  // namespace panelkit::views

// panelkit views: the Firmware page: the versions, the upload form and the (hidden) progress block.
#pragma once

#include "views/PageView.h"

namespace panelkit::views {

/// The "Load" and "Status" tabs of the Firmware page.
class Firmware : public PageView {
public:
    Firmware(std::ostream& out, page::Content& content, const web::Application& app);
    void render_page() override;
    void render_scripts() override;

protected:
    /// The bar the upload and the firmware tool move, with its state and byte count.
    void render_progress_block(bool shown);
    /// The text of a section of the page's command output, "" when it has none.
    const std::string& Section(const std::string& title) const;
};

}  // namespace panelkit::views

// panelkit views: the About page: one row per package with its licence files, an opened file's text under it.
#pragma once

#include "views/PageView.h"

namespace panelkit::views {

/// The licence notices. Each licence file comes as a section titled "package/file" holding its text
/// (empty unless the file was opened), grouped by package.
class About : public PageView {
public:
    using PageView::PageView;

    void render_page() override;

private:
    void _Row(const std::string& package, std::size_t first, std::size_t end);
};

}  // namespace panelkit::views

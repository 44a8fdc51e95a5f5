// panelkit views: the layout of pages with tabs (inputs without rows).
#pragma once

#include "views/Base.h"

namespace panelkit::web::widgets {
class BaseWidget;
}

namespace panelkit::views {

/// A page whose content is a set of tabs; the tab opened first comes from the content.
class BaseTabbed : public Base {
public:
    /// A view of tabbed content.
    BaseTabbed(std::ostream& out, data::BaseTabbed& content, const web::Application& app);

    /// The input alone, then the error span when the widget failed.
    virtual void render_widget(const web::widgets::BaseWidget& widget);
    void render_scripts() override;

protected:
    data::BaseTabbed& tabbed_;
};

}  // namespace panelkit::views

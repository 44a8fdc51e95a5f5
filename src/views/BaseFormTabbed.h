// panelkit views: the layout of tabbed pages made of form rows.
#pragma once

#include "views/BaseForm.h"

namespace panelkit::views {

/// Form rows inside a set of tabs.
class BaseFormTabbed : public BaseForm {
public:
    /// A view of tabbed content.
    BaseFormTabbed(std::ostream& out, data::BaseTabbed& content, const web::Application& app);
    void render_scripts() override;

protected:
    data::BaseTabbed& tabbed_;
};

}  // namespace panelkit::views

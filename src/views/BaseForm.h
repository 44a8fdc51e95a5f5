// panelkit views: the layout with form rows: label, input and the widget's error.
#pragma once

#include "views/Base.h"

namespace panelkit::web {
class Form;
namespace widgets {
class BaseWidget;
}
}  // namespace panelkit::web

namespace panelkit::views {

/// A page of form rows.
class BaseForm : public Base {
public:
    using Base::Base;

    /// A row hidden at load (the page's script reveals it), with its id.
    virtual void render_hidden_widget(const web::widgets::BaseWidget& widget, const std::string& rowId);
    /// A row: the label, the input and, when failing, the error.
    virtual void render_widget(const web::widgets::BaseWidget& widget);
    /// Every widget's row in order, after the form's request-forgery token.
    virtual void render_form(const web::Form& form);

protected:
    /// The hidden token field every posted form must carry.
    void render_csrf_field();
    /// A row with the given classes and id.
    void render_row(const web::widgets::BaseWidget& widget, const std::string& classes, const std::string& rowId);
};

}  // namespace panelkit::views

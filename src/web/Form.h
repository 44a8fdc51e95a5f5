// panelkit web layer: a form: widgets in order, loaded and checked together.
#pragma once

#include <vector>

namespace panelkit::web {

class Request;
namespace widgets {
class BaseWidget;
}

/// The widgets of one form, in the order they were added (the widgets are members of the derived form).
class Form {
public:
    Form() = default;
    virtual ~Form() = default;
    Form(const Form&) = delete;
    Form& operator=(const Form&) = delete;

    /// Adds a widget at the end.
    void add(widgets::BaseWidget& widget) { widgets_.push_back(&widget); }
    /// Loads every widget from the request.
    virtual void load(const Request& request);
    /// Checks every widget; true when all pass. Stops at the first failure.
    virtual bool validate();
    /// The widgets in order.
    const std::vector<widgets::BaseWidget*>& widgets() const { return widgets_; }

private:
    std::vector<widgets::BaseWidget*> widgets_;
};

}  // namespace panelkit::web

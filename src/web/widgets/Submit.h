// panelkit web layer: a submit button; pressed() tells which button sent the form.
#pragma once

#include "web/widgets/BaseWidget.h"

namespace panelkit::web::widgets {

/// A submit button with its caption.
class Submit : public BaseWidget {
public:
    /// The caption.
    const std::string& value() const { return value_; }
    /// Sets the caption.
    void value(const std::string& caption) { value_ = caption; }
    /// True when this button sent the form.
    bool pressed() const { return pressed_; }

    void load(const Request& request) override;
    void render_input(std::ostream& out) const override;

private:
    std::string value_;
    bool pressed_ = false;
};

}  // namespace panelkit::web::widgets

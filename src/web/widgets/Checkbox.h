// panelkit web layer: a check box; absent from a post means unticked.
#pragma once

#include "web/widgets/BaseWidget.h"

namespace panelkit::web::widgets {

/// A check box posting its identification value when ticked.
class Checkbox : public BaseWidget {
public:
    /// True when ticked.
    bool value() const { return value_; }
    /// Ticks or unticks the box.
    void value(bool ticked);
    /// The value posted when ticked ("y" unless changed).
    const std::string& identification() const { return identification_; }
    /// Sets the value posted when ticked.
    void identification(const std::string& value) { identification_ = value; }

    void load(const Request& request) override;
    void render_input(std::ostream& out) const override;

private:
    bool value_ = false;
    std::string identification_ = "y";
};

}  // namespace panelkit::web::widgets

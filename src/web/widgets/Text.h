// panelkit web layer: a one-line text input with length limits.
#pragma once

#include "web/widgets/BaseWidget.h"

namespace panelkit::web::widgets {

/// A text input; its length (in characters) must lie within the limits.
class Text : public BaseWidget {
public:
    /// The text.
    const std::string& value() const { return value_; }
    /// Sets the text and marks the widget as holding a value.
    void value(const std::string& value);
    /// Allowed length in characters; max -1 means unbounded.
    void limits(int min, int max);
    /// The shortest allowed length.
    int low() const { return min_; }
    /// The longest allowed length, -1 when unbounded.
    int high() const { return max_; }

    void load(const Request& request) override;
    bool validate() override;
    void render_input(std::ostream& out) const override;

protected:
    /// Writes an input of the given type holding the value.
    void renderAs(std::ostream& out, const char* type, bool withValue) const;

private:
    std::string value_;
    int min_ = 0;
    int max_ = -1;
};

}  // namespace panelkit::web::widgets

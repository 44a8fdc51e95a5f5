// panelkit web layer: a hidden input carrying a value through a form.
#pragma once

#include "web/widgets/Text.h"

namespace panelkit::web::widgets {

/// A text value the user does not see.
class Hidden : public Text {
public:
    void render_input(std::ostream& out) const override { renderAs(out, "hidden", true); }
};

}  // namespace panelkit::web::widgets

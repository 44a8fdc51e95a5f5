// panelkit web layer: a password input; what was typed is never written back into the page.
#pragma once

#include "web/widgets/Text.h"

namespace panelkit::web::widgets {

/// A text input shown masked, rendered without its value.
class Password : public Text {
public:
    void render_input(std::ostream& out) const override { renderAs(out, "password", false); }
};

}  // namespace panelkit::web::widgets

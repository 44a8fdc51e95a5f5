// panelkit web layer: a single choice shown as a set of radio buttons instead of a drop-down list.
#pragma once

#include "web/widgets/Select.h"

namespace panelkit::web::widgets {

/// A Select whose options are radio buttons, one per line; posted, loaded and checked as a Select.
class Radio : public Select {
public:
    /// A division with the widget's id holding one labelled button per option; button i has the id + "_" + i.
    void render_input(std::ostream& out) const override;
};

}  // namespace panelkit::web::widgets

// panelkit forms: the base of every page form: all widgets are checked and every failing one is marked.
#include "forms/Base.h"

#include "util/Validation.h"
#include "web/widgets/BaseWidget.h"

namespace panelkit::forms {

bool Base::validate()
{
    bool all = true;
    for (auto* widget : widgets()) {
        if (widget->validate())
            continue;
        util::validation::AddClass(*widget, "cppcms_error_msg");
        all = false;
    }
    return all;
}

}  // namespace panelkit::forms

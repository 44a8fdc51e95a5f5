// panelkit web layer: a form: widgets in order, loaded and checked together.
#include "web/Form.h"

#include "web/widgets/BaseWidget.h"

namespace panelkit::web {

void Form::load(const Request& request)
{
    for (auto* widget : widgets_)
        widget->load(request);
}

bool Form::validate()
{
    for (auto* widget : widgets_)
        if (!widget->validate())
            return false;
    return true;
}

}  // namespace panelkit::web

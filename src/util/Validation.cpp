// panelkit util: set-up of widget checks with the system's error texts, and the class-attribute helper.
#include "util/Validation.h"

#include <Poco/RegularExpression.h>

namespace panelkit::util::validation {

void Length(web::widgets::Text& widget, int min, int max)
{
    widget.limits(min, max);
    widget.error_message("Invalid length; minimum " + std::to_string(min) + ", maximum " + std::to_string(max));
}

void Length(web::widgets::File& widget, int min, int max)
{
    widget.limits(min, max);
    widget.non_empty();
    widget.error_message("Invalid file length; minimum " + std::to_string(min) + ", maximum " + std::to_string(max) +
                         " bytes.");
}

void MinLength(web::widgets::Text& widget, int min)
{
    widget.limits(min, -1);
    widget.error_message("Invalid length; minimum " + std::to_string(min));
}

void AddClass(web::widgets::BaseWidget& widget, const std::string& cls)
{
    if (cls.empty())
        return;
    const std::string attributes = widget.attributes_string();
    if (attributes.empty()) {
        widget.attributes_string("class='" + cls + "'");
        return;
    }
    static const Poco::RegularExpression classList(".*class=['\"](.*)['\"].*");
    Poco::RegularExpression::MatchVec groups;
    if (classList.match(attributes, 0, groups) == 0 || groups.size() < 2 || groups[1].offset == std::string::npos) {
        widget.attributes_string("class='" + cls + "'");
        return;
    }
    std::string updated = attributes;
    updated.insert(groups[1].offset + groups[1].length, " " + cls);
    widget.attributes_string(updated);
}

}  // namespace panelkit::util::validation

// panelkit util: set-up of widget checks with the system's error texts, and the class-attribute helper.
#pragma once

#include "web/widgets/File.h"
#include "web/widgets/Text.h"

#include <string>

namespace panelkit::util::validation {

/// Requires a value; the error text is "This field is required".
template <class Widget>
void NonEmpty(Widget& widget)
{
    widget.non_empty();
    widget.error_message("This field is required");
}

/// Limits a text's length.
void Length(web::widgets::Text& widget, int min, int max);
/// Limits a file's size in bytes and requires a file.
void Length(web::widgets::File& widget, int min, int max);
/// Sets a text's shortest length (no longest).
void MinLength(web::widgets::Text& widget, int min);
/// Adds a CSS class to the widget's attribute string.
void AddClass(web::widgets::BaseWidget& widget, const std::string& cls);

}  // namespace panelkit::util::validation

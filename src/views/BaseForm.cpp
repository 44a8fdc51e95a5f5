// panelkit views: the layout with form rows: label, input and the widget's error.
#include "views/BaseForm.h"

#include "web/Form.h"
#include "web/widgets/BaseWidget.h"

namespace panelkit::views {

void BaseForm::render_csrf_field()
{
    out_ << "<input type=\"hidden\" name=\"_csrf\" value=\"";
    Esc(content_.csrf_token);
    out_ << "\" />";
}

void BaseForm::render_row(const web::widgets::BaseWidget& widget, const std::string& classes, const std::string& rowId)
{
    out_ << "<tr";
    if (!rowId.empty()) {
        out_ << " id=\"";
        Esc(rowId);
        out_ << "\"";
    }
    if (!classes.empty())
        out_ << " class=\"" << classes << "\"";
    for (const auto& [name, value] : widget.data()) {
        out_ << " data-";
        Esc(name);
        out_ << "=\"";
        Esc(value);
        out_ << "\"";
    }
    out_ << "><th>";
    if (!widget.message().empty()) {
        // A label points at its input only when the input has an id to point at.
        if (widget.id().empty()) {
            out_ << "<label>";
        } else {
            out_ << "<label for=\"";
            Esc(widget.id());
            out_ << "\">";
        }
        Esc(widget.message());
        out_ << "</label>";
    }
    out_ << "</th><td>";
    render_input_and_error(widget);
    out_ << "</td></tr>\n";
}

void BaseForm::render_hidden_widget(const web::widgets::BaseWidget& widget, const std::string& rowId)
{
    render_row(widget, widget.valid() ? "hiddenOnLoad" : "hiddenOnLoad cppcms_error_msg", rowId);
}

void BaseForm::render_widget(const web::widgets::BaseWidget& widget)
{
    render_row(widget, widget.valid() ? "" : "cppcms_error_msg", "");
}

void BaseForm::render_form(const web::Form& form)
{
    if (form.widgets().empty())
        return;
    out_ << "<tr class=\"csrf_row\"><td colspan=\"2\">";
    render_csrf_field();
    out_ << "</td></tr>\n";
    for (const auto* widget : form.widgets())
        render_widget(*widget);
}

}  // namespace panelkit::views

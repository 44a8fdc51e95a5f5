// panelkit web layer: a one-line text input with length limits.
#include "web/widgets/Text.h"

#include "web/Html.h"
#include "web/Request.h"

namespace panelkit::web::widgets {

namespace {

// Characters, not bytes: a multi-byte UTF-8 sequence counts once.
int CharacterCount(const std::string& text)
{
    int count = 0;
    for (unsigned char c : text)
        count += (c & 0xC0) != 0x80;
    return count;
}

}  // namespace

void Text::value(const std::string& value)
{
    value_ = value;
    set(true);
}

void Text::limits(int min, int max)
{
    min_ = min;
    max_ = max;
}

void Text::load(const Request& request)
{
    value_ = request.post(name());
    set(request.posted(name()) && !value_.empty());
}

bool Text::validate()
{
    if (!BaseWidget::validate())
        return false;
    const int length = CharacterCount(value_);
    const bool fits = length >= min_ && (max_ < 0 || length <= max_);
    valid(fits);
    return fits;
}

void Text::render_input(std::ostream& out) const
{
    renderAs(out, "text", true);
}

void Text::renderAs(std::ostream& out, const char* type, bool withValue) const
{
    out << "<input type=\"" << type << "\"";
    renderCommonAttributes(out);
    if (withValue)
        out << " value=\"" << Html::Escaped{value_} << "\"";
    out << " />";
}

}  // namespace panelkit::web::widgets

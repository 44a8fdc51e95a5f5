// panelkit web layer: escaping text for HTML.
#include "web/Html.h"

#include <ostream>

namespace panelkit::web {

namespace {

const char kSpecial[] = "&<>\"'";

const char* Entity(char c)
{
    switch (c) {
    case '&': return "&amp;";
    case '<': return "&lt;";
    case '>': return "&gt;";
    case '"': return "&quot;";
    default: return "&#39;";
    }
}

// Copies the runs between special characters whole; pages are mostly plain text.
template <class Sink>
void EscapeInto(const std::string& text, Sink&& sink)
{
    std::size_t done = 0;
    for (auto at = text.find_first_of(kSpecial); at != std::string::npos; at = text.find_first_of(kSpecial, done)) {
        sink(text.data() + done, at - done);
        const char* entity = Entity(text[at]);
        sink(entity, std::char_traits<char>::length(entity));
        done = at + 1;
    }
    sink(text.data() + done, text.size() - done);
}

}  // namespace

std::string Html::Escape(const std::string& text)
{
    std::string out;
    out.reserve(text.size());
    EscapeInto(text, [&out](const char* s, std::size_t n) { out.append(s, n); });
    return out;
}

std::ostream& operator<<(std::ostream& out, const Html::Escaped& escaped)
{
    EscapeInto(escaped.text, [&out](const char* s, std::size_t n) { out.write(s, static_cast<std::streamsize>(n)); });
    return out;
}

}  // namespace panelkit::web

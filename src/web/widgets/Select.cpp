// panelkit web layer: a drop-down list; a posted id must be one of its options.
#include "web/widgets/Select.h"

#include "web/Html.h"
#include "web/Request.h"

namespace panelkit::web::widgets {

void Select::add(const std::string& label, const std::string& id)
{
    options_.push_back({label, id});
}

void Select::clear()
{
    options_.clear();
    selected(-1);
}

std::string Select::selected_id() const
{
    return selected_ < 0 ? std::string() : options_[static_cast<std::size_t>(selected_)].id;
}

void Select::selected_id(const std::string& id)
{
    selected(-1);
    for (std::size_t i = 0; i < options_.size(); ++i)
        if (options_[i].id == id) {
            selected(static_cast<int>(i));
            return;
        }
}

void Select::selected(int index)
{
    selected_ = index >= 0 && index < static_cast<int>(options_.size()) ? index : -1;
    set(selected_ >= 0);
}

void Select::load(const Request& request)
{
    const bool posted = request.posted(name());
    if (posted)
        selected_id(request.post(name()));
    else
        selected(-1);
    // An id that is none of the options was never offered: the post is refused, not ignored.
    unknown_ = posted && selected_ < 0;
}

bool Select::validate()
{
    valid(!unknown_ && BaseWidget::validate());
    return valid();
}

void Select::render_input(std::ostream& out) const
{
    out << "<select";
    renderCommonAttributes(out);
    out << ">";
    for (std::size_t i = 0; i < options_.size(); ++i) {
        out << "<option value=\"" << Html::Escaped{options_[i].id} << "\"";
        if (static_cast<int>(i) == selected_)
            out << " selected=\"selected\"";
        out << ">" << Html::Escaped{options_[i].label} << "</option>";
    }
    out << "</select>";
}

}  // namespace panelkit::web::widgets

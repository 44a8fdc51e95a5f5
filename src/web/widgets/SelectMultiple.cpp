// panelkit web layer: a list of which several options may be selected.
#include "web/widgets/SelectMultiple.h"

#include "web/Html.h"
#include "web/Request.h"

#include <algorithm>

namespace panelkit::web::widgets {

void SelectMultiple::add(const std::string& label, const std::string& id, bool selected)
{
    options_.push_back({label, id, selected});
}

std::vector<std::string> SelectMultiple::selected_ids() const
{
    std::vector<std::string> ids;
    for (const auto& option : options_)
        if (option.selected)
            ids.push_back(option.id);
    return ids;
}

void SelectMultiple::selected_ids(const std::vector<std::string>& ids)
{
    unknown_ = false;
    for (auto& option : options_)
        option.selected = std::find(ids.begin(), ids.end(), option.id) != ids.end();
    for (const auto& id : ids)
        unknown_ = unknown_ || std::none_of(options_.begin(), options_.end(),
                                            [&](const Option& option) { return option.id == id; });
    set(!selected_ids().empty());
}

void SelectMultiple::select(std::size_t index, bool selected)
{
    if (index < options_.size())
        options_[index].selected = selected;
    set(!selected_ids().empty());
}

void SelectMultiple::load(const Request& request)
{
    selected_ids(request.postAll(name()));
}

bool SelectMultiple::validate()
{
    const auto count = static_cast<unsigned>(selected_ids().size());
    valid(!unknown_ && count >= atLeast_ && (atMost_ == 0 || count <= atMost_) && BaseWidget::validate());
    return valid();
}

void SelectMultiple::render_input(std::ostream& out) const
{
    out << "<select multiple=\"multiple\"";
    renderCommonAttributes(out);
    if (rows_ > 0)
        out << " size=\"" << rows_ << "\"";
    out << ">";
    for (const auto& option : options_) {
        out << "<option value=\"" << Html::Escaped{option.id} << "\"";
        if (option.selected)
            out << " selected=\"selected\"";
        out << ">" << Html::Escaped{option.label} << "</option>";
    }
    out << "</select>";
}

}  // namespace panelkit::web::widgets

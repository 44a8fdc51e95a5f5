// panelkit util: a page's widgets bound to parameter-store keys: filled from the keys, saved in order.
#include "util/Binding.h"

#include "util/Pardb.h"
#include "web/widgets/Checkbox.h"
#include "web/widgets/Select.h"
#include "web/widgets/Text.h"

namespace panelkit::util {

Binding Bindings::Text(web::widgets::Text& widget, const std::string& key)
{
    return {[&widget, key] { widget.value(Pardb::GetString(key)); },
            [&widget, key] { return Pardb::Set(key, widget.value()); }};
}

Binding Bindings::Flag(web::widgets::Checkbox& widget, const std::string& key)
{
    return {[&widget, key] { widget.value(Pardb::GetString(key) == "yes"); },
            [&widget, key] { return Pardb::Set(key, std::string(widget.value() ? "yes" : "no")); }};
}

Binding Bindings::Select(web::widgets::Select& widget, const std::string& key)
{
    return {[&widget, key] { widget.selected_id(Pardb::GetString(key)); },
            [&widget, key] { return Pardb::Set(key, widget.selected_id()); }};
}

void Bindings::Load(const std::vector<Binding>& bindings)
{
    for (const auto& binding : bindings)
        binding.load();
}

bool Bindings::Save(const std::vector<Binding>& bindings)
{
    for (const auto& binding : bindings)
        if (!binding.save())
            return false;
    return true;
}

}  // namespace panelkit::util

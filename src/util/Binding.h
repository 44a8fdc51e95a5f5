// panelkit util: a page's widgets bound to parameter-store keys: filled from the keys, saved in order.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace panelkit::web::widgets {
class Checkbox;
class Select;
class Text;
}  // namespace panelkit::web::widgets

namespace panelkit::util {

/// One widget and its key: how to fill the widget and how to store it.
struct Binding {
    /// Fills the widget from the store.
    std::function<void()> load;
    /// Stores the widget's value; false when the write failed.
    std::function<bool()> save;
};

/// The bindings of a page, declared once.
class Bindings {
public:
    /// A text stored as it is.
    static Binding Text(web::widgets::Text& widget, const std::string& key);
    /// A check box stored as "yes" or "no".
    static Binding Flag(web::widgets::Checkbox& widget, const std::string& key);
    /// A selection stored as the selected option's id.
    static Binding Select(web::widgets::Select& widget, const std::string& key);

    /// Fills every widget from its key.
    static void Load(const std::vector<Binding>& bindings);
    /// Stores the widgets in order, stopping at the first failed write; true when all were stored.
    static bool Save(const std::vector<Binding>& bindings);
};

}  // namespace panelkit::util

// panelkit web layer: a drop-down list; a posted id must be one of its options.
#pragma once

#include "web/widgets/BaseWidget.h"

#include <vector>

namespace panelkit::web::widgets {

/// A single choice among labelled options.
class Select : public BaseWidget {
public:
    /// One choice: the text shown and the id posted.
    struct Option {
        std::string label;
        std::string id;
    };

    /// Adds an option.
    void add(const std::string& label, const std::string& id);
    /// The options in order.
    const std::vector<Option>& options() const { return options_; }
    /// Removes every option and the selection.
    void clear();
    /// The selected option's id, "" when none.
    std::string selected_id() const;
    /// Selects the option with the id; an unknown id selects nothing.
    void selected_id(const std::string& id);
    /// The selected option's index, -1 when none.
    int selected() const { return selected_; }
    /// Selects by index; -1 selects nothing.
    void selected(int index);

    void load(const Request& request) override;
    bool validate() override;
    void render_input(std::ostream& out) const override;

private:
    std::vector<Option> options_;
    int selected_ = -1;
    bool unknown_ = false;
};

}  // namespace panelkit::web::widgets

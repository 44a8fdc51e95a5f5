// panelkit web layer: a list of which several options may be selected.
#pragma once

#include "web/widgets/BaseWidget.h"

#include <vector>

namespace panelkit::web::widgets {

/// Several choices among labelled options, with a bound on how many.
class SelectMultiple : public BaseWidget {
public:
    /// One choice: the text shown, the id posted and whether it is selected.
    struct Option {
        std::string label;
        std::string id;
        bool selected;
    };

    /// Adds an option.
    void add(const std::string& label, const std::string& id, bool selected = false);
    /// The options in order.
    const std::vector<Option>& options() const { return options_; }
    /// The selected ids, in option order.
    std::vector<std::string> selected_ids() const;
    /// Selects exactly the options whose ids are given.
    void selected_ids(const std::vector<std::string>& ids);
    /// Selects or deselects the option at the index.
    void select(std::size_t index, bool selected);
    /// How many selections are required at least.
    void at_least(unsigned count) { atLeast_ = count; }
    /// How many selections are allowed at most (0: any number).
    void at_most(unsigned count) { atMost_ = count; }
    /// The number of rows shown.
    void rows(unsigned count) { rows_ = count; }

    void load(const Request& request) override;
    bool validate() override;
    void render_input(std::ostream& out) const override;

private:
    std::vector<Option> options_;
    unsigned atLeast_ = 0;
    unsigned atMost_ = 0;
    unsigned rows_ = 0;
    bool unknown_ = false;
};

}  // namespace panelkit::web::widgets

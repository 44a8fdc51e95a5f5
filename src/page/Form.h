// panelkit page: the form of one request, built from a page's field declarations.
#pragma once

#include "forms/Base.h"
#include "page/Field.h"
#include "web/widgets/BaseWidget.h"

#include <memory>
#include <string>
#include <vector>

namespace panelkit::page {

/// The widgets of one request, each made from its field, looked up by name.
class Form : public forms::Base {
public:
    /// A form of fresh widgets for the fields.
    explicit Form(const std::vector<Field>& fields);

    /// The widget of the named field; throws web::Error for a name the page does not have.
    web::widgets::BaseWidget& operator[](const std::string& name);
    /// The widget of the named field as its kind.
    template <class W>
    W& Get(const std::string& name)
    {
        return dynamic_cast<W&>((*this)[name]);
    }
    /// The field's value as text: a text, a selection's id, a number, "yes"/"no" for a check box.
    std::string Value(const std::string& name);
    /// Shows the value given as text in the field (a selection's id, a number's digits).
    void Set(const std::string& name, const std::string& value);
    /// True when the field counts: it depends on no field, or that field holds its value.
    bool Counts(const Field& field);

    /// Fills every stored field from the store.
    void Load();
    /// Fills the named fields from the store.
    void Load(const std::vector<std::string>& names);
    /// Lets the fields that do not count stay empty, then checks every widget.
    bool validate() override;
    /// Stores the fields that count, in the order given (all fields when empty), stopping at
    /// the first failed write; true when every write succeeded.
    bool Save(const std::vector<std::string>& order);

    /// The declarations, in the order shown.
    const std::vector<Field>& Fields() const { return fields_; }

private:
    const Field& _Field(const std::string& name) const;

    const std::vector<Field>& fields_;
    std::vector<std::unique_ptr<web::widgets::BaseWidget>> owned_;
};

}  // namespace panelkit::page

// panelkit page: the form of one request, built from a page's field declarations.
#include "page/Form.h"

#include "web/Error.h"
#include "web/widgets/Checkbox.h"
#include "web/widgets/Numeric.h"
#include "web/widgets/Select.h"
#include "web/widgets/Text.h"

namespace panelkit::page {

Form::Form(const std::vector<Field>& fields) : fields_(fields)
{
    owned_.reserve(fields.size());
    for (const auto& field : fields) {
        owned_.push_back(field.Make());
        add(*owned_.back());
    }
}

const Field& Form::_Field(const std::string& name) const
{
    for (const auto& field : fields_)
        if (field.Name() == name)
            return field;
    throw web::Error("the form has no field \"" + name + "\"");
}

web::widgets::BaseWidget& Form::operator[](const std::string& name)
{
    for (std::size_t i = 0; i < fields_.size(); ++i)
        if (fields_[i].Name() == name)
            return *owned_[i];
    throw web::Error("the form has no field \"" + name + "\"");
}

std::string Form::Value(const std::string& name)
{
    auto& widget = (*this)[name];
    if (auto* text = dynamic_cast<web::widgets::Text*>(&widget))
        return text->value();
    if (auto* select = dynamic_cast<web::widgets::Select*>(&widget))
        return select->selected_id();
    if (auto* box = dynamic_cast<web::widgets::Checkbox*>(&widget))
        return box->value() ? "yes" : "no";
    if (auto* number = dynamic_cast<web::widgets::Numeric<int>*>(&widget))
        return std::to_string(number->value());
    if (auto* number = dynamic_cast<web::widgets::Numeric<unsigned>*>(&widget))
        return std::to_string(number->value());
    throw web::Error("field \"" + name + "\" has no single value");
}

void Form::Set(const std::string& name, const std::string& value)
{
    Field::SetText((*this)[name], value);
}

bool Form::Counts(const Field& field)
{
    return field.WhenField().empty() || Value(field.WhenField()) == field.WhenValue();
}

void Form::Load()
{
    for (std::size_t i = 0; i < fields_.size(); ++i)
        fields_[i].Load(*owned_[i]);
}

void Form::Load(const std::vector<std::string>& names)
{
    for (const auto& name : names)
        _Field(name).Load((*this)[name]);
}

bool Form::validate()
{
    for (std::size_t i = 0; i < fields_.size(); ++i)
        if (!Counts(fields_[i]))
            fields_[i].Relax(*owned_[i]);
    return forms::Base::validate();
}

bool Form::Save(const std::vector<std::string>& order)
{
    if (order.empty()) {
        for (std::size_t i = 0; i < fields_.size(); ++i)
            if (Counts(fields_[i]) && !fields_[i].Save(*owned_[i]))
                return false;
        return true;
    }
    for (const auto& name : order) {
        const Field& field = _Field(name);
        if (Counts(field) && !field.Save((*this)[name]))
            return false;
    }
    return true;
}

}  // namespace panelkit::page

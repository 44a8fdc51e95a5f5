// panelkit page: one form field declared once: its widget, name, id, label, checks, store key and the field it depends on.
#include "page/Field.h"

#include "util/Pardb.h"
#include "util/Validation.h"
#include "web/Error.h"
#include "web/Html.h"
#include "web/widgets/Checkbox.h"
#include "web/widgets/File.h"
#include "web/widgets/Hidden.h"
#include "web/widgets/Numeric.h"
#include "web/widgets/Password.h"
#include "web/widgets/Radio.h"
#include "web/widgets/Select.h"
#include "web/widgets/SelectMultiple.h"
#include "web/widgets/Submit.h"
#include "web/widgets/Text.h"
#include "widgets/IpAddress.h"

#include <cstdlib>
#include <optional>

namespace panelkit::page {

namespace {

using web::widgets::BaseWidget;

// The widget as the kind a step needs; a declaration that mixes kinds fails when the page is built.
template <class W>
W& As(BaseWidget& widget, const char* what)
{
    auto* typed = dynamic_cast<W*>(&widget);
    if (!typed)
        throw web::Error("field \"" + widget.name() + "\" cannot take " + what);
    return *typed;
}

template <class W>
const W* Is(const BaseWidget& widget)
{
    return dynamic_cast<const W*>(&widget);
}

template <class W>
W* Is(BaseWidget& widget)
{
    return dynamic_cast<W*>(&widget);
}

template <class W>
Field::Maker Builder(const std::string& name, const std::string& id, const std::string& label)
{
    return [name, id, label] {
        auto widget = std::make_unique<W>();
        widget->name(name);
        widget->id(id);
        widget->message(label);
        return std::unique_ptr<BaseWidget>(std::move(widget));
    };
}

// The widget's value as the text a string key holds.
std::string TextOf(const BaseWidget& widget)
{
    if (const auto* text = Is<web::widgets::Text>(widget))
        return text->value();
    if (const auto* select = Is<web::widgets::Select>(widget))
        return select->selected_id();
    if (const auto* number = Is<web::widgets::Numeric<int>>(widget))
        return std::to_string(number->value());
    if (const auto* number = Is<web::widgets::Numeric<unsigned>>(widget))
        return std::to_string(number->value());
    throw web::Error("field \"" + widget.name() + "\" has no text value");
}

}  // namespace

Field::Field(std::string name, Maker make) : name_(std::move(name)), make_(std::move(make)) {}

Field Field::Text(const std::string& name, const std::string& id, const std::string& label)
{
    Field field(name, Builder<web::widgets::Text>(name, id, label));
    field.relax_ = [](BaseWidget& widget) {
        auto& text = static_cast<web::widgets::Text&>(widget);
        text.non_empty(false);
        text.limits(0, text.high());
    };
    return field;
}

Field Field::Password(const std::string& name, const std::string& id, const std::string& label)
{
    Field field = Text(name, id, label);
    field.make_ = Builder<web::widgets::Password>(name, id, label);
    return field;
}

Field Field::Ip(const std::string& name, const std::string& id, const std::string& label)
{
    Field field(name, Builder<widgets::IpAddress>(name, id, label));
    field.Error("Invalid IP address");
    field.relax_ = [](BaseWidget& widget) { static_cast<widgets::IpAddress&>(widget).SetAllowEmpty(true); };
    return field;
}

Field Field::Check(const std::string& name, const std::string& id, const std::string& label)
{
    return Field(name, Builder<web::widgets::Checkbox>(name, id, label));
}

Field Field::Select(const std::string& name, const std::string& id, const std::string& label,
                    const std::vector<std::pair<std::string, std::string>>& options)
{
    Field field(name, Builder<web::widgets::Select>(name, id, label));
    field.Configure([options](BaseWidget& widget) {
        for (const auto& [text, value] : options)
            static_cast<web::widgets::Select&>(widget).add(text, value);
    });
    field.relax_ = [](BaseWidget& widget) { widget.non_empty(false); };
    return field;
}

Field Field::Radio(const std::string& name, const std::string& id, const std::string& label,
                   const std::vector<std::pair<std::string, std::string>>& options)
{
    Field field = Select(name, id, label, options);
    field.make_ = Builder<web::widgets::Radio>(name, id, label);
    return field;
}

Field Field::Multi(const std::string& name, const std::string& id, const std::string& label,
                   const std::vector<std::string>& labels)
{
    Field field(name, Builder<web::widgets::SelectMultiple>(name, id, label));
    // Options are posted by position, so that a stored bit mask maps onto them directly.
    field.Configure([labels](BaseWidget& widget) {
        for (std::size_t i = 0; i < labels.size(); ++i)
            static_cast<web::widgets::SelectMultiple&>(widget).add(labels[i], std::to_string(i));
    });
    field.relax_ = [](BaseWidget& widget) { static_cast<web::widgets::SelectMultiple&>(widget).at_least(0); };
    return field;
}

Field Field::Int(const std::string& name, const std::string& id, const std::string& label)
{
    Field field(name, Builder<web::widgets::Numeric<int>>(name, id, label));
    field.relax_ = [](BaseWidget& widget) { widget.non_empty(false); };
    return field;
}

Field Field::Unsigned(const std::string& name, const std::string& id, const std::string& label)
{
    Field field(name, Builder<web::widgets::Numeric<unsigned>>(name, id, label));
    field.relax_ = [](BaseWidget& widget) { widget.non_empty(false); };
    return field;
}

Field Field::Hidden(const std::string& name, const std::string& id)
{
    return Field(name, Builder<web::widgets::Hidden>(name, id, ""));
}

Field Field::Submit(const std::string& name, const std::string& id, const std::string& caption)
{
    Field field(name, Builder<web::widgets::Submit>(name, id, ""));
    field.Configure([caption](BaseWidget& widget) { static_cast<web::widgets::Submit&>(widget).value(caption); });
    return field;
}

Field Field::File(const std::string& name, const std::string& id, const std::string& label)
{
    return Field(name, Builder<web::widgets::File>(name, id, label));
}

Field& Field::Label(const std::string& text)
{
    return Configure([text](BaseWidget& widget) { widget.message(text); });
}

Field& Field::Help(const std::string& text)
{
    return Configure([text](BaseWidget& widget) { widget.help(text); });
}

Field& Field::Error(const std::string& text)
{
    return Configure([text](BaseWidget& widget) { widget.error_message(text); });
}

Field& Field::Required()
{
    return Configure([](BaseWidget& widget) {
        if (auto* text = Is<web::widgets::Text>(widget))
            return util::validation::NonEmpty(*text);
        if (auto* select = Is<web::widgets::Select>(widget))
            return util::validation::NonEmpty(*select);
        if (auto* number = Is<web::widgets::Numeric<unsigned>>(widget))
            return util::validation::NonEmpty(*number);
        widget.non_empty(true);
        widget.error_message("This field is required");
    });
}

Field& Field::Upload(std::int64_t minSize, std::int64_t maxSize, const std::string& mime, const std::string& name,
                     const std::string& magic)
{
    // Compiled once with the declaration; every request's widget shares it.
    std::optional<web::Pattern> names;
    if (!name.empty())
        names.emplace(name);
    return Configure([=](BaseWidget& widget) {
        auto& file = As<web::widgets::File>(widget, "an upload");
        file.limits(minSize, maxSize);
        file.mime(mime);
        if (names)
            file.filename(*names);
        if (!magic.empty())
            file.add_valid_magic(magic);
    });
}

Field& Field::Length(int min, int max)
{
    return Configure([min, max](BaseWidget& widget) {
        if (auto* file = Is<web::widgets::File>(widget))
            return util::validation::Length(*file, min, max);
        util::validation::Length(As<web::widgets::Text>(widget, "a length"), min, max);
    });
}

Field& Field::Range(int min, int max)
{
    return Configure([min, max](BaseWidget& widget) {
        if (auto* number = Is<web::widgets::Numeric<int>>(widget))
            number->range(min, max);
        else
            As<web::widgets::Numeric<unsigned>>(widget, "a range")
                .range(static_cast<unsigned>(min), static_cast<unsigned>(max));
        widget.error_message("Invalid range; minimum " + std::to_string(min) + ", maximum " + std::to_string(max));
        widget.attributes_string("data-min=\"" + std::to_string(min) + "\" data-max=\"" + std::to_string(max) + "\"");
    });
}

Field& Field::MinLength(int min)
{
    return Configure(
        [min](BaseWidget& widget) { util::validation::MinLength(As<web::widgets::Text>(widget, "a length"), min); });
}

Field& Field::Selected(const std::string& id)
{
    return Configure([id](BaseWidget& widget) { As<web::widgets::Select>(widget, "a selection").selected_id(id); });
}

Field& Field::Choices(unsigned rows, unsigned atLeast, const std::string& error)
{
    return Configure([rows, atLeast, error](BaseWidget& widget) {
        auto& list = As<web::widgets::SelectMultiple>(widget, "choices");
        list.rows(rows);
        list.at_least(atLeast);
        list.error_message(error);
    });
}

Field& Field::Attributes(const std::string& attributes)
{
    return Configure([attributes](BaseWidget& widget) { widget.attributes_string(attributes); });
}

Field& Field::Confirm(const std::string& question)
{
    // onload.js asks before any button that carries a question.
    return Attributes("data-confirm=\"" + web::Html::Escape(question) + "\"");
}

Field& Field::Configure(Step step)
{
    steps_.push_back(std::move(step));
    return *this;
}

Field& Field::Key(const std::string& key)
{
    return Bind(
        key, [key](BaseWidget& widget) { SetText(widget, util::Pardb::GetString(key)); },
        [key](const BaseWidget& widget) { return util::Pardb::Set(key, TextOf(widget)); });
}

Field& Field::Flag(const std::string& key, const std::string& on, const std::string& off)
{
    return Bind(
        key,
        [key, on](BaseWidget& widget) {
            As<web::widgets::Checkbox>(widget, "a flag").value(util::Pardb::GetString(key) == on);
        },
        [key, on, off](const BaseWidget& widget) {
            const bool ticked = static_cast<const web::widgets::Checkbox&>(widget).value();
            return util::Pardb::Set(key, ticked ? on : off);
        });
}

Field& Field::IntKey(const std::string& key)
{
    return Bind(
        key, [key](BaseWidget& widget) { SetText(widget, std::to_string(util::Pardb::GetInt(key))); },
        [key](const BaseWidget& widget) { return util::Pardb::Set(key, std::atoi(TextOf(widget).c_str())); });
}

Field& Field::Mask(const std::string& key)
{
    return Bind(
        key,
        [key](BaseWidget& widget) {
            auto& list = As<web::widgets::SelectMultiple>(widget, "a mask");
            const int mask = util::Pardb::GetInt(key);
            for (std::size_t i = 0; i < list.options().size(); ++i)
                list.select(i, (mask & (1 << i)) != 0);
        },
        [key](const BaseWidget& widget) {
            const auto& list = static_cast<const web::widgets::SelectMultiple&>(widget);
            int mask = 0;
            for (std::size_t i = 0; i < list.options().size(); ++i)
                if (list.options()[i].selected)
                    mask |= 1 << i;
            return util::Pardb::Set(key, mask);
        });
}

Field& Field::Bind(const std::string& key, Loader load, Saver save)
{
    key_ = key;
    load_ = std::move(load);
    save_ = std::move(save);
    return *this;
}

Field& Field::When(const std::string& other, const std::string& value)
{
    whenField_ = other;
    whenValue_ = value;
    return Configure([other, value](BaseWidget& widget) {
        widget.data("when-field", other);
        widget.data("when-value", value);
    });
}

std::unique_ptr<web::widgets::BaseWidget> Field::Make() const
{
    auto widget = make_();
    for (const auto& step : steps_)
        step(*widget);
    return widget;
}

void Field::Load(web::widgets::BaseWidget& widget) const
{
    if (load_)
        load_(widget);
}

bool Field::Save(const web::widgets::BaseWidget& widget) const
{
    return !save_ || save_(widget);
}

void Field::SetText(BaseWidget& widget, const std::string& value)
{
    if (auto* text = Is<web::widgets::Text>(widget))
        return text->value(value);
    if (auto* select = Is<web::widgets::Select>(widget))
        return select->selected_id(value);
    if (auto* number = Is<web::widgets::Numeric<int>>(widget))
        return number->value(std::atoi(value.c_str()));
    if (auto* number = Is<web::widgets::Numeric<unsigned>>(widget))
        return number->value(static_cast<unsigned>(std::strtoul(value.c_str(), nullptr, 10)));
    throw web::Error("field \"" + widget.name() + "\" has no text value");
}

void Field::Relax(web::widgets::BaseWidget& widget) const
{
    if (relax_)
        relax_(widget);
}

}  // namespace panelkit::page

// panelkit web layer: what every form widget has: name, id, label, help, attributes, states and its error.
#pragma once

#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace panelkit::web {
class Request;
}

namespace panelkit::web::widgets {

/// A form input: loads itself from the request, checks itself and renders its HTML input.
class BaseWidget {
public:
    BaseWidget() = default;
    virtual ~BaseWidget() = default;
    BaseWidget(const BaseWidget&) = delete;
    BaseWidget& operator=(const BaseWidget&) = delete;

    /// The name the value is posted under.
    const std::string& name() const { return name_; }
    /// Sets the posted name.
    void name(const std::string& name) { name_ = name; }
    /// The HTML id.
    const std::string& id() const { return id_; }
    /// Sets the HTML id.
    void id(const std::string& id) { id_ = id; }
    /// The label shown beside the input.
    const std::string& message() const { return message_; }
    /// Sets the label.
    void message(const std::string& message) { message_ = message; }
    /// The help text.
    const std::string& help() const { return help_; }
    /// Sets the help text.
    void help(const std::string& help) { help_ = help; }
    /// Extra attributes written into the input ("class='wide'"); trusted, written as they are.
    const std::string& attributes_string() const { return attributes_; }
    /// Sets the extra attributes.
    void attributes_string(const std::string& attributes) { attributes_ = attributes; }
    /// The text shown when the widget fails its check.
    const std::string& error_message() const { return error_; }
    /// Sets the failure text.
    void error_message(const std::string& error) { error_ = error; }
    /// True unless the last check (or load) failed.
    bool valid() const { return valid_; }
    /// Marks the widget as passing or failing.
    void valid(bool valid) { valid_ = valid; }
    /// True when the input is shown disabled.
    bool disabled() const { return disabled_; }
    /// Shows the input disabled or not.
    void disabled(bool disabled) { disabled_ = disabled; }
    /// True when the input is shown read-only.
    bool readonly() const { return readonly_; }
    /// Shows the input read-only or not.
    void readonly(bool readonly) { readonly_ = readonly; }
    /// True when a value is required.
    bool required() const { return nonEmpty_; }
    /// Requires a value.
    void non_empty(bool required = true) { nonEmpty_ = required; }
    /// True when the widget holds a value (loaded or set).
    bool set() const { return set_; }
    /// Marks the widget as holding a value or not.
    void set(bool set) { set_ = set; }
    /// Adds an attribute "data-" + name for the page's scripts, written on the widget's row.
    void data(const std::string& name, const std::string& value) { data_.emplace_back(name, value); }
    /// The data attributes, (name, value) in order.
    const std::vector<std::pair<std::string, std::string>>& data() const { return data_; }

    /// Reads the widget's value from the request (a POST's values).
    virtual void load(const Request& request) = 0;
    /// Checks the value; the base requires a value when non_empty(). Sets valid().
    virtual bool validate();
    /// Writes the HTML input element.
    virtual void render_input(std::ostream& out) const = 0;

protected:
    /// Writes id, name, the disabled and read-only states and the extra attributes.
    void renderCommonAttributes(std::ostream& out) const;

private:
    std::string name_;
    std::string id_;
    std::string message_;
    std::string help_;
    std::string attributes_;
    std::string error_;
    bool valid_ = true;
    bool disabled_ = false;
    bool readonly_ = false;
    bool nonEmpty_ = false;
    bool set_ = false;
    std::vector<std::pair<std::string, std::string>> data_;
};

}  // namespace panelkit::web::widgets

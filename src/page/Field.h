// panelkit page: one form field declared once: its widget, name, id, label, checks, store key and the field it depends on.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace panelkit::web::widgets {
class BaseWidget;
}

namespace panelkit::page {

/// A field of a page: how to build its widget for a request, which store key it edits and how,
/// and when it counts at all. Declared once; every request builds a fresh widget from it.
class Field {
public:
    /// Builds and configures a widget.
    using Maker = std::function<std::unique_ptr<web::widgets::BaseWidget>()>;
    /// One configuration step applied to a new widget.
    using Step = std::function<void(web::widgets::BaseWidget&)>;
    /// Fills a widget from the store.
    using Loader = std::function<void(web::widgets::BaseWidget&)>;
    /// Stores a widget's value; false when a write failed.
    using Saver = std::function<bool(const web::widgets::BaseWidget&)>;

    /// A one-line text.
    static Field Text(const std::string& name, const std::string& id, const std::string& label);
    /// A masked text, never written back into the page.
    static Field Password(const std::string& name, const std::string& id, const std::string& label);
    /// A dotted-quad IPv4 address; "Invalid IP address" when it is not one.
    static Field Ip(const std::string& name, const std::string& id, const std::string& label);
    /// A check box.
    static Field Check(const std::string& name, const std::string& id, const std::string& label);
    /// A drop-down list of (label, id) options.
    static Field Select(const std::string& name, const std::string& id, const std::string& label,
                        const std::vector<std::pair<std::string, std::string>>& options = {});
    /// A single choice of (label, id) options shown as radio buttons.
    static Field Radio(const std::string& name, const std::string& id, const std::string& label,
                       const std::vector<std::pair<std::string, std::string>>& options);
    /// A list of which several options may be chosen.
    static Field Multi(const std::string& name, const std::string& id, const std::string& label,
                       const std::vector<std::string>& labels);
    /// A whole number (int).
    static Field Int(const std::string& name, const std::string& id, const std::string& label);
    /// A non-negative whole number.
    static Field Unsigned(const std::string& name, const std::string& id, const std::string& label);
    /// A value carried through the form, unseen.
    static Field Hidden(const std::string& name, const std::string& id);
    /// A submit button with its caption.
    static Field Submit(const std::string& name, const std::string& id, const std::string& caption);
    /// A file upload; the file stays on disk where the request streamed it.
    static Field File(const std::string& name, const std::string& id, const std::string& label);

    /// The label shown beside the field (a button's is its caption's row).
    Field& Label(const std::string& text);
    /// The help text shown with the field.
    Field& Help(const std::string& text);
    /// The text shown when the field fails its check.
    Field& Error(const std::string& text);
    /// A value is required ("This field is required").
    Field& Required();
    /// A text's length limits ("Invalid length; minimum .., maximum .."), or a file's size in bytes, which then
    /// must be given ("Invalid file length; minimum .., maximum .. bytes.").
    Field& Length(int min, int max);
    /// A number's limits ("Invalid range; minimum .., maximum .."), also told to the page's script (data-min, data-max).
    Field& Range(int min, int max);
    /// A text's shortest length ("Invalid length; minimum ..").
    Field& MinLength(int min);
    /// The option preselected before anything is loaded.
    Field& Selected(const std::string& id);
    /// Rows shown by a list, and how many choices it needs ("error" when fewer).
    Field& Choices(unsigned rows, unsigned atLeast, const std::string& error);
    /// What an uploaded file must be: its size in bytes, MIME type ("" any), whole-name expression
    /// ("" any) and first bytes ("" any).
    Field& Upload(std::int64_t minSize, std::int64_t maxSize, const std::string& mime, const std::string& name,
                  const std::string& magic);
    /// Extra attributes written into the input as they are (a page's own markup, never user text).
    Field& Attributes(const std::string& attributes);
    /// A button that asks the question first and does nothing unless the user agrees.
    Field& Confirm(const std::string& question);
    /// Any other configuration of the widget.
    Field& Configure(Step step);

    /// Edits a string key: a text as typed, a selection as its id, a number as its decimal text.
    Field& Key(const std::string& key);
    /// Edits a check box stored as the two texts ("yes" / "no" unless given).
    Field& Flag(const std::string& key, const std::string& on = "yes", const std::string& off = "no");
    /// Edits an int key: a number, or a selection's id read as a number.
    Field& IntKey(const std::string& key);
    /// Edits an int key holding a bit mask: option i of a list stands for bit i.
    Field& Mask(const std::string& key);
    /// Edits a key its own way.
    Field& Bind(const std::string& key, Loader load, Saver save);

    /// The field counts only while the field `other` holds `value`: otherwise it may stay empty,
    /// it is not stored, and the page hides its row and disables it (through its data attributes).
    Field& When(const std::string& other, const std::string& value);

    /// The posted name.
    const std::string& Name() const { return name_; }
    /// The store key, "" for a field that is not stored.
    const std::string& StoreKey() const { return key_; }
    /// The field it depends on, "" when none.
    const std::string& WhenField() const { return whenField_; }
    /// The value of WhenField that makes this field count.
    const std::string& WhenValue() const { return whenValue_; }
    /// True when the field is stored.
    bool Bound() const { return static_cast<bool>(save_); }

    /// A new configured widget.
    std::unique_ptr<web::widgets::BaseWidget> Make() const;
    /// Fills the widget from the store (nothing for an unbound field).
    void Load(web::widgets::BaseWidget& widget) const;
    /// Stores the widget; true for an unbound field.
    bool Save(const web::widgets::BaseWidget& widget) const;
    /// Shows a text value in a widget: a text as it is, a selection's id, a number's digits.
    static void SetText(web::widgets::BaseWidget& widget, const std::string& value);
    /// Lets the widget stay empty, for a field whose condition does not hold.
    void Relax(web::widgets::BaseWidget& widget) const;

private:
    Field(std::string name, Maker make);

    std::string name_;
    Maker make_;
    std::vector<Step> steps_;
    Step relax_;
    std::string key_;
    Loader load_;
    Saver save_;
    std::string whenField_;
    std::string whenValue_;
};

}  // namespace panelkit::page

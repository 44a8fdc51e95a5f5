// panelkit data: the one result message a page shows after a request.
#pragma once

#include <string>

namespace panelkit::data {

/// A result box: its kind, its text, whether it stays visible, and a CSS class for custom boxes.
class Message {
public:
    /// How the box is drawn.
    enum class ResultClass { None = 0, OK = 1, Error = 2, Custom = 3 };

    /// A message of the given kind; no CSS class.
    explicit Message(ResultClass result = ResultClass::None, std::string text = "", bool persistent = false);
    virtual ~Message() = default;
    Message(const Message&) = default;
    Message& operator=(const Message&) = default;

    /// The kind of box.
    ResultClass GetResultClass() const { return result_; }
    /// Replaces the kind of box.
    void SetResult(ResultClass result) { result_ = result; }
    /// The text.
    const std::string& GetText() const { return text_; }
    /// Replaces the text.
    void SetMessage(const std::string& text) { text_ = text; }
    /// True when the box stays visible.
    bool IsPersistent() const { return persistent_; }
    /// Makes the box stay visible or not.
    void SetPersistent(bool persistent) { persistent_ = persistent; }
    /// True when the text is empty (the kind is not looked at).
    bool IsEmpty() const { return text_.empty(); }
    /// Empties the text; kind, persistence and CSS class stay.
    void Clear() { text_.clear(); }
    /// The CSS class of a custom box.
    const std::string& GetCssClass() const { return css_; }
    /// Sets the CSS class and makes the box a custom one.
    void SetCssClass(const std::string& css);

    /// A success box.
    static Message OK(const std::string& text, bool persistent = false);
    /// A failure box.
    static Message Error(const std::string& text, bool persistent = false);
    /// A box drawn with the given CSS class.
    static Message Custom(const std::string& text, const std::string& css, bool persistent = false);
    /// "Success: The form values were saved."
    static Message SaveOK();
    /// "Save error: The form values were not saved."
    static Message SaveError();
    /// "Invalid values: The form values were not saved."
    static Message ValidationError();

private:
    ResultClass result_;
    std::string text_;
    bool persistent_;
    std::string css_;
};

}  // namespace panelkit::data

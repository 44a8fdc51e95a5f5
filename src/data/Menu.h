// panelkit data: one entry of the two-level side menu, with its children.
#pragma once

#include <string>
#include <vector>

namespace panelkit::web {
class Application;
}

namespace panelkit::data {

/// A menu entry: its label, the mapper path of its page (empty for a group) and an optional parameter.
class Menu {
public:
    /// An entry without children.
    Menu(std::string text, std::string path = "", std::string parameter = "");
    virtual ~Menu() = default;
    Menu(const Menu&) = default;
    Menu& operator=(const Menu&) = default;

    /// The label.
    const std::string& GetText() const { return text_; }
    /// Replaces the label.
    void SetText(const std::string& text) { text_ = text; }
    /// The mapper path ("/network/ethernet1"), empty for a group.
    const std::string& GetPath() const { return path_; }
    /// Replaces the mapper path.
    void SetPath(const std::string& path) { path_ = path; }
    /// The mapper parameter, empty when none.
    const std::string& GetParameter() const { return parameter_; }
    /// Replaces the mapper parameter.
    void SetParameter(const std::string& parameter) { parameter_ = parameter; }
    /// The sub-entries in display order.
    const std::vector<Menu>& GetChildren() const { return children_; }
    /// The sub-entries in display order.
    std::vector<Menu>& GetChildren() { return children_; }
    /// The label with blanks turned into underscores, for HTML ids.
    std::string Id() const;
    /// The link to the page through the application's mapper; "" for a group.
    std::string Url(const web::Application& app) const;
    /// Appends a copy of the child with its subtree; an entry cannot be added to itself.
    Menu& operator<<(const Menu& child);

private:
    std::string text_;
    std::string path_;
    std::string parameter_;
    std::vector<Menu> children_;
};

}  // namespace panelkit::data

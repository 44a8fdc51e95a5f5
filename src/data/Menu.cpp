// panelkit data: one entry of the two-level side menu, with its children.
#include "data/Menu.h"

#include "web/Application.h"
#include "web/Log.h"

#include <algorithm>

namespace panelkit::data {

Menu::Menu(std::string text, std::string path, std::string parameter)
    : text_(std::move(text)), path_(std::move(path)), parameter_(std::move(parameter))
{
}

std::string Menu::Id() const
{
    std::string id = text_;
    std::replace(id.begin(), id.end(), ' ', '_');
    return id;
}

std::string Menu::Url(const web::Application& app) const
{
    if (path_.empty())
        return "";
    if (parameter_.empty())
        return app.url(path_);
    return app.url(path_, {parameter_});
}

Menu& Menu::operator<<(const Menu& child)
{
    if (&child == this) {
        PK_ERROR() << "Cannot add menu to itself!";
        return *this;
    }
    children_.push_back(child);
    return *this;
}

}  // namespace panelkit::data

// panelkit page: a whole page as a declaration: route and menu entry, title, forms of fields, hooks, status tab.
#include "page/Page.h"

namespace panelkit::page {

Page::Page(const std::string& name, const std::string& title)
    : name_(name), title_(title), pattern_("/" + name), expressions_{"/" + name}
{
}

Page& Page::Route(const std::string& pattern, std::vector<std::string> expressions, std::vector<int> groups)
{
    pattern_ = pattern;
    expressions_ = expressions.empty() ? std::vector<std::string>{pattern} : std::move(expressions);
    groups_ = std::move(groups);
    return *this;
}

Page& Page::Menu(const std::string& text)
{
    menu_ = text;
    return *this;
}

Page& Page::Title(std::function<std::string(const std::vector<std::string>&)> title)
{
    titleOf_ = std::move(title);
    return *this;
}

Page& Page::View(const std::string& name)
{
    view_ = name;
    return *this;
}

Page& Page::Form(const std::string& id, const std::string& tab, const std::string& submitName,
                 const std::string& submitValue)
{
    FormDeclaration form;
    form.id = id;
    form.tab = tab;
    form.submitName = submitName;
    form.submitValue = submitValue;
    forms_.push_back(std::move(form));
    return *this;
}

Page::FormDeclaration& Page::_Current()
{
    if (forms_.empty())
        Form(name_ + "_config");
    return forms_.back();
}

Page& Page::Part(const std::string& submitName, const std::string& submitValue)
{
    const FormDeclaration& owner = _Current();
    FormDeclaration part;
    part.id = owner.id;
    part.tab = owner.tab;
    part.part = true;
    part.submitName = submitName;
    part.submitValue = submitValue;
    forms_.push_back(std::move(part));
    return *this;
}

Page& Page::TabId(const std::string& id)
{
    _Current().tabId = id;
    return *this;
}

Page& Page::Multipart()
{
    _Current().multipart = true;
    return *this;
}

Page& Page::Add(Field field)
{
    _Current().fields.push_back(std::move(field));
    return *this;
}

Page& Page::SaveOrder(std::vector<std::string> names)
{
    _Current().saveOrder = std::move(names);
    return *this;
}

Page& Page::Also(Check check)
{
    _Current().checks.push_back(std::move(check));
    return *this;
}

Page& Page::SaveWith(Save save)
{
    _Current().save = std::move(save);
    return *this;
}

Page& Page::Saved(const std::string& text, bool reboot)
{
    _Current().savedText = text;
    _Current().reboot = reboot;
    return *this;
}

Page& Page::After(Hook hook)
{
    _Current().after = std::move(hook);
    return *this;
}

Page& Page::Invalid(Hook hook)
{
    _Current().invalid = std::move(hook);
    return *this;
}

Page& Page::EmptyAfterSave()
{
    _Current().empty = true;
    return *this;
}

Page& Page::ReloadAfterPost(const std::string& field, const std::string& value, std::vector<std::string> names)
{
    FormDeclaration& form = _Current();
    form.reloadField = field;
    form.reloadValue = value;
    form.reloadNames = std::move(names);
    return *this;
}

Page& Page::On(const std::string& name, const std::string& value, Action action)
{
    buttons_.push_back({name, value, std::move(action), forms_.empty() ? 0 : forms_.size() - 1});
    return *this;
}

Page& Page::Prepare(Hook hook)
{
    prepare_.push_back(std::move(hook));
    return *this;
}

Page& Page::Intro(const std::string& text, const std::string& cssClass)
{
    intro_ = text;
    introClass_ = cssClass;
    return *this;
}

Page& Page::Fact(const std::string& label, std::function<std::string()> value)
{
    facts_.emplace_back(label, std::move(value));
    return *this;
}

Page& Page::Status(const std::string& method, std::vector<Output> blocks, const std::string& target)
{
    method_ = method;
    target_ = target.empty() ? method : target;
    status_ = std::move(blocks);
    return *this;
}

Page& Page::StatusFrom(std::function<Json::Value()> read)
{
    read_ = std::move(read);
    return *this;
}

Json::Value Page::StatusReply() const
{
    if (read_)
        return read_();
    Json::Value reply(Json::objectValue);
    for (const auto& block : status_)
        reply[block.member] = block.make();
    return reply;
}

Page& Page::Separated()
{
    separated_ = true;
    return *this;
}

Page& Page::StatusInTab(const std::string& heading)
{
    _Current().status = true;
    _Current().statusHeading = heading;
    return *this;
}

Page& Page::StatusFailure(const std::string& text)
{
    statusFailure_ = text;
    return *this;
}

Page& Page::Renderer(const std::string& script)
{
    renderer_ = script;
    return *this;
}

Page& Page::Diagnostics(const std::string& id, std::vector<Output> blocks, bool first)
{
    diagnosticsId_ = id;
    diagnostics_ = std::move(blocks);
    diagnosticsFirst_ = first;
    return *this;
}

Page::Layout Page::GetLayout() const
{
    if (!forms_.empty() && TabOf(forms_.size() - 1) > 0)
        return Layout::MultiForm;
    if (!method_.empty())
        return Layout::Tabbed;
    return forms_.empty() ? Layout::Plain : Layout::Form;
}

std::size_t Page::TabOf(std::size_t form) const
{
    // Every form opens a tab; a part stays in the tab of its form.
    std::size_t tab = 0;
    for (std::size_t i = 1; i <= form && i < forms_.size(); ++i)
        tab += !forms_[i].part;
    return tab;
}

std::string Page::TitleFor(const std::vector<std::string>& args) const
{
    return titleOf_ ? titleOf_(args) : title_;
}

}  // namespace panelkit::page

// panelkit page: the one flow of every declared page: prepare, load, validate, store in order, message, render.
#include "page/Runner.h"

#include "apps/Base.h"
#include "page/Content.h"
#include "page/Page.h"
#include "util/FlagFiles.h"
#include "views/PageView.h"
#include "web/Log.h"
#include "web/Response.h"

#include <memory>
#include <utility>

namespace panelkit::page {

namespace {

// The form a post was meant for: the only one, or the one whose submit was sent.
int PostedForm(apps::Base& app, const Page& page)
{
    const auto& forms = page.Forms();
    for (std::size_t i = 0; i < forms.size(); ++i) {
        const auto& declared = forms[i];
        if (declared.submitName.empty() ? forms.size() == 1 : app.HttpPost(declared.submitName) == declared.submitValue)
            return static_cast<int>(i);
    }
    return -1;
}

}  // namespace

void Runner::Serve(apps::Base& app, const Page& page, const std::vector<std::string>& args)
{
    Content content(page);
    app.Prepare(content);
    content.title = page.TitleFor(args);
    if (!page.StatusMethod().empty()) {
        content.refresh_interval = 1000;
        content.status_url = app.StatusUrl();
    }
    for (const auto& [label, value] : page.Facts())
        content.facts.emplace_back(label, value());
    Call call{app, content, *content.forms.front(), args};
    for (std::size_t i = 0; i < page.Preparations().size() && !content.answered; ++i)
        page.Preparations()[i](call);
    if (content.answered)
        return;
    if (app.HttpPost()) {
        // What every request shows gives way to what the post did.
        const data::Message standing = std::exchange(content.message, data::Message());
        if (_Post(app, page, content, args) || content.answered)
            return;
        if (content.message.GetResultClass() == data::Message::ResultClass::None)
            content.message = standing;
    }
    // Forms the request did not post show what is stored.
    if (app.HttpPost() || app.HttpGet())
        for (std::size_t i = 0; i < content.forms.size(); ++i)
            if (static_cast<int>(i) != content.posted)
                content.forms[i]->Load();
    for (const auto& block : page.DiagnosticsBlocks())
        content.sections.emplace_back(block.title, block.make());
    _Render(app, page, content);
}

bool Runner::_Post(apps::Base& app, const Page& page, Content& content, const std::vector<std::string>& args)
{
    for (const auto& button : page.Buttons()) {
        if (app.HttpPost(button.name) != button.value)
            continue;
        Call call{app, content, *content.forms[button.form], args};
        content.selected_tab = static_cast<std::int32_t>(page.TabOf(button.form));
        return button.action(call);
    }
    const int index = PostedForm(app, page);
    if (index < 0) {
        if (!page.Forms().empty())
            PK_ERROR() << "Unknown submit received";
        return false;
    }
    content.posted = index;
    content.selected_tab = static_cast<std::int32_t>(page.TabOf(static_cast<std::size_t>(index)));
    _PostForm(app, page, content, static_cast<std::size_t>(index), args);
    return false;
}

void Runner::_PostForm(apps::Base& app, const Page& page, Content& content, std::size_t index,
                       const std::vector<std::string>& args)
{
    const Page::FormDeclaration& declared = page.Forms()[index];
    Form& form = *content.forms[index];
    Call call{app, content, form, args};
    bool valid = app.ValidateForm(form);
    if (!valid && declared.invalid)
        declared.invalid(call);
    for (std::size_t i = 0; valid && i < declared.checks.size(); ++i)
        valid = declared.checks[i](call);
    if (!valid) {
        if (content.message.GetResultClass() == data::Message::ResultClass::None)
            content.message = data::Message::ValidationError();
    } else if (declared.save ? declared.save(call) : form.Save(declared.saveOrder)) {
        // A page's own save may have said what happened; otherwise the standard outcome.
        if (content.message.GetResultClass() == data::Message::ResultClass::None)
            content.message = declared.savedText.empty() ? data::Message::SaveOK() : data::Message::OK(declared.savedText);
        if (declared.reboot) {
            util::MarkRebootRequired();
            content.reboot_required = util::IsRebootRequired();
        }
        if (declared.after)
            declared.after(call);
        if (declared.empty)
            content.forms[index] = std::make_unique<Form>(declared.fields);
    } else if (content.message.GetResultClass() == data::Message::ResultClass::None) {
        content.message = data::Message::SaveError();
    }
    if (!declared.reloadNames.empty() && content.forms[index]->Value(declared.reloadField) == declared.reloadValue)
        content.forms[index]->Load(declared.reloadNames);
}

void Runner::_Render(apps::Base& app, const Page& page, Content& content)
{
    if (!page.ViewName().empty()) {
        app.render(page.ViewName(), content);
        return;
    }
    views::PageView(app.response().out(), content, app).render();
}

}  // namespace panelkit::page

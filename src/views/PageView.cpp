// panelkit views: the default view of a declared page: a form, a form with a status tab, or a tab per form.
#include "views/PageView.h"

#include "page/Page.h"

namespace panelkit::views {

namespace {

std::string TabId(const page::Page::FormDeclaration& declared)
{
    return declared.tabId.empty() ? declared.id + "_tab" : declared.tabId;
}

// The form at index and the parts that follow it.
std::vector<std::size_t> PartsOf(const page::Page& page, std::size_t index)
{
    std::vector<std::size_t> parts{index};
    const auto& forms = page.Forms();
    for (std::size_t i = index + 1; i < forms.size() && forms[i].part; ++i)
        parts.push_back(i);
    return parts;
}

}  // namespace

PageView::PageView(std::ostream& out, page::Content& content, const web::Application& app)
    : BaseForm(out, content, app), page_(content)
{
}

void PageView::render_page()
{
    const page::Page& page = page_.page;
    if (!page.IntroText().empty()) {
        out_ << "<p class=\"";
        Esc(page.IntroClass());
        out_ << "\">";
        Esc(page.IntroText());
        out_ << "</p>";
    }
    switch (page.GetLayout()) {
    case page::Page::Layout::Plain:
        return;
    case page::Page::Layout::Form:
        if (!page.Forms().empty())
            render_config_tab(0);
        return;
    case page::Page::Layout::Tabbed:
        out_ << "<div id=\"tabcontainer\"><ul class=\"tabnav\"><li><a href=\"#config_tab\">Configuration</a></li>"
                "<li><a href=\"#status_tab\">Status</a></li></ul>\n<div id=\"config_tab\" class=\"tabdiv\">";
        if (!page.Forms().empty())
            render_config_tab(0);
        out_ << "</div>\n<div id=\"status_tab\" class=\"tabdiv\">";
        render_status_tab();
        out_ << "</div></div>\n";
        return;
    case page::Page::Layout::MultiForm:
        out_ << "<div id=\"tabcontainer\"><ul class=\"tabnav\">";
        for (const auto& declared : page.Forms()) {
            if (declared.part)
                continue;
            out_ << "<li><a href=\"#";
            Esc(TabId(declared));
            out_ << "\">";
            Esc(declared.tab);
            out_ << "</a></li>";
        }
        out_ << "</ul>\n";
        for (std::size_t i = 0; i < page.Forms().size(); ++i)
            if (!page.Forms()[i].part)
                render_form_tab(i);
        out_ << "</div>\n";
        return;
    }
}

void PageView::render_form_tab(std::size_t index)
{
    const auto& forms = page_.page.Forms();
    out_ << "<div id=\"";
    Esc(TabId(forms[index]));
    out_ << "\" class=\"tabdiv\">";
    render_config_tab(index);
    for (std::size_t i : PartsOf(page_.page, index)) {
        if (!forms[i].status)
            continue;
        out_ << "<h3>";
        Esc(forms[i].statusHeading);
        out_ << "</h3>";
        render_status_tab();
    }
    out_ << "</div>\n";
}

void PageView::render_facts()
{
    for (const auto& [label, value] : page_.facts) {
        out_ << "<tr><th>";
        Esc(label);
        out_ << "</th><td class=\"ui-serial-number\"><b>";
        Esc(value);
        out_ << "</b></td></tr>";
    }
}

void PageView::render_config_tab(std::size_t index)
{
    const auto& forms = page_.page.Forms();
    const std::vector<std::size_t> parts = PartsOf(page_.page, index);
    bool multipart = false;
    for (std::size_t i : parts)
        multipart = multipart || forms[i].multipart;
    out_ << "<div id=\"";
    Esc(forms[index].id);
    out_ << "\"><form method=\"post\" action=\"\"" << (multipart ? " enctype=\"multipart/form-data\"" : "")
         << "><table class=\"form_table\">";
    if (index == 0)
        render_facts();
    render_form(*page_.forms[index]);
    // The parts' rows follow in the same form, which already carries its token.
    for (std::size_t i = 1; i < parts.size(); ++i)
        for (const auto* widget : page_.forms[parts[i]]->widgets())
            render_widget(*widget);
    out_ << "</table></form></div>";
}

void PageView::render_status_tab()
{
    const page::Page& page = page_.page;
    // The command output made while the page rendered, before or after the live status.
    const auto diagnostics = [this, &page](bool first) {
        if (page.DiagnosticsId().empty() || page.DiagnosticsFirst() != first)
            return;
        out_ << "<div class=\"command_output\" id=\"";
        Esc(page.DiagnosticsId());
        out_ << "\">";
        render_sections(page_.sections);
        out_ << "</div>";
    };
    diagnostics(true);
    out_ << "<div class=\"command_output\" id=\"";
    Esc(page.StatusTarget());
    out_ << "\"><img src=\"";
    Esc(content_.media_root);
    out_ << "/images/spinner.gif\" alt=\"Loading\" class=\"spinner_image\" /></div>";
    diagnostics(false);
}

void PageView::render_sections(const std::vector<data::ShellOutput::Section>& sections)
{
    out_ << "<table class=\"shell_output\">";
    for (const auto& section : sections) {
        out_ << "<tr><td><h3>";
        Esc(section.title);
        out_ << "</h3><div class=\"command_output\"><pre>";
        Esc(section.output);
        out_ << "</pre></div></td></tr>";
    }
    out_ << "</table>";
}

void PageView::render_scripts()
{
    BaseForm::render_scripts();
    if (!page_.values.empty())
        ScriptData("page") = page_.values;
    const page::Page& page = page_.page;
    if (page.GetLayout() == page::Page::Layout::Tabbed || page.GetLayout() == page::Page::Layout::MultiForm)
        ScriptData("tabs")["selected"] = page_.selected_tab;
    if (page.StatusMethod().empty())
        return;
    Json::Value& status = ScriptData("status");
    status["url"] = page_.status_url;
    status["interval"] = page_.refresh_interval;
    status["method"] = page.StatusMethod();
    status["target"] = page.StatusTarget();
    if (page.StatusSeparated())
        status["separated"] = true;
    if (!page.StatusFailureText().empty())
        status["failure"] = page.StatusFailureText();
    Json::Value& sections = status["sections"];
    sections = Json::Value(Json::arrayValue);
    for (const auto& block : page.StatusBlocks()) {
        Json::Value section;
        section["member"] = block.member;
        section["title"] = block.title;
        sections.append(section);
    }
    AddScript("/js/status.js");
    if (!page.StatusRenderer().empty())
        AddScript(page.StatusRenderer());
}

}  // namespace panelkit::views

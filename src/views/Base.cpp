// panelkit views: the common page layout: head, alerts, message, banner, menus, content pane and footer.
#include "views/Base.h"

#include "web/Application.h"
#include "web/Error.h"
#include "web/Html.h"
#include "web/Log.h"
#include "web/Request.h"
#include "web/widgets/BaseWidget.h"

#include <Poco/URI.h>

namespace panelkit::views {

namespace {

// JSON inside a script element must not be able to close it.
std::string ScriptSafeJson(const Json::Value& value)
{
    // Built once: making a builder sets up all its defaults, and writing through it is read-only.
    static const Json::StreamWriterBuilder writer = [] {
        Json::StreamWriterBuilder builder;
        builder["indentation"] = "";
        return builder;
    }();
    const std::string json = Json::writeString(writer, value);
    std::string safe;
    safe.reserve(json.size());
    for (char c : json) {
        if (c == '<')
            safe += "\\u003c";
        else if (c == '>')
            safe += "\\u003e";
        else if (c == '&')
            safe += "\\u0026";
        else
            safe.push_back(c);
    }
    return safe;
}

}  // namespace

Base::Base(std::ostream& out, data::Base& content, const web::Application& app)
    : out_(out), content_(content), app_(app)
{
}

void Base::Esc(const std::string& text)
{
    out_ << web::Html::Escaped{text};
}

void Base::WriteRaw(const std::string& html)
{
    out_ << html;
}

Json::Value& Base::ScriptData(const std::string& name)
{
    return scriptData_[name];
}

void Base::AddScript(const std::string& path)
{
    scriptFiles_.push_back(MediaUrl(path));
}

std::string Base::MediaUrl(const std::string& path)
{
    if (revision_.empty()) {
        std::string encoded;
        Poco::URI::encode(content_.build_date, "&?#+", encoded);
        revision_ = "?rev=" + web::Html::Escape(encoded);
    }
    return web::Html::Escape(content_.media_root) + path + revision_;
}

void Base::render_input_and_error(const web::widgets::BaseWidget& widget)
{
    widget.render_input(out_);
    if (widget.valid())
        return;
    out_ << "<span class=\"cppcms_error_msg\">";
    Esc(widget.error_message());
    out_ << "</span>";
}

void Base::render()
{
    out_ << "<!DOCTYPE html PUBLIC \"-//W3C//DTD XHTML 1.0 Transitional//EN\" "
            "\"http://www.w3.org/TR/xhtml1/DTD/xhtml1-transitional.dtd\">\n"
            "<html xmlns=\"http://www.w3.org/1999/xhtml\">\n<head>\n";
    render_head();
    out_ << "</head>\n<body>\n";
    render_alerts();
    render_messages();
    render_banner();
    render_content();
    render_footer();
    out_ << "</body>\n";
    if (content_.read_only)
        ScriptData("readOnly") = true;
    render_scripts();
    out_ << "<script type=\"application/json\" id=\"panelkit_page_data\">" << ScriptSafeJson(scriptData_)
         << "</script>\n";
    for (const auto& file : scriptFiles_)
        out_ << "<script type=\"text/javascript\" src=\"" << file << "\"></script>\n";
    out_ << "</html>\n";
}

void Base::render_head()
{
    out_ << "<title>";
    Esc(content_.branding.window_text);
    out_ << "</title>\n<meta http-equiv=\"Content-Type\" content=\"text/html; charset=utf-8\" />\n"
         << "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\" />\n"
         << "<link rel=\"icon\" href=\"" << web::Html::Escaped{content_.media_root} << "/images/Brenvik.ico\" />\n";
    for (const char* sheet : {"/css/jquery-ui.min.css", "/css/screen.css"})
        out_ << "<link rel=\"stylesheet\" type=\"text/css\" href=\"" << MediaUrl(sheet) << "\" />\n";
    for (const char* script : {"/js/jquery.min.js", "/js/jquery-ui.min.js", "/js/onload.js"})
        out_ << "<script type=\"text/javascript\" src=\"" << MediaUrl(script) << "\"></script>\n";
    for (const auto& sheet : content_.stylesheets) {
        out_ << "<link rel=\"stylesheet\" type=\"text/css\" href=\"";
        Esc(sheet);
        out_ << "\" />\n";
    }
    for (const auto& script : content_.scripts) {
        out_ << "<script type=\"text/javascript\" src=\"";
        Esc(script);
        out_ << "\"></script>\n";
    }
}

void Base::render_alerts()
{
    const char* text = nullptr;
    if (content_.reboot_required) {
        out_ << "<div class=\"alerts hiddenOnLoad\" id=\"alertsBox\">Settings have been changed that require a <a href=\"";
        Esc(app_.url("/settings/reboot"));
        out_ << "\">Reboot</a></div>\n";
        return;
    }
    if (content_.fw_base_alert == 1)
        text = "Recovery image is not up to date. Upgrade Firmware";
    else if (content_.fw_base_alert == 2)
        text = "Recovery image mismatch and application could not be started. Upgrade firmware";
    if (text)
        out_ << "<div class=\"alerts hiddenOnLoad\" id=\"alertsBox\">" << text << "</div>\n";
}

void Base::render_messages()
{
    using Result = data::Message::ResultClass;
    const data::Message& message = content_.message;
    if (message.GetResultClass() == Result::None)
        return;
    std::string classes = message.GetResultClass() == Result::OK      ? "success"
                          : message.GetResultClass() == Result::Error ? "failure"
                                                                      : message.GetCssClass();
    if (message.IsPersistent())
        classes += " static";
    classes += " form_result_msg";
    out_ << "<div class=\"";
    Esc(classes);
    out_ << "\">";
    Esc(message.GetText());
    out_ << "</div>\n";
}

void Base::render_scripts()
{
    if (content_.reboot_required || content_.fw_base_alert != 0)
        ScriptData("repositionBanner") = true;
}

void Base::render_banner()
{
    out_ << "<div id=\"banner\">";
    if (!content_.branding.banner_html.empty()) {
        WriteRaw(content_.branding.banner_html);
    } else {
        out_ << "<div id=\"banner_logo\"></div><div id=\"banner_middle\"><h1>";
        Esc(content_.branding.banner_text);
        out_ << "</h1></div><div id=\"banner_right\"></div>";
    }
    out_ << "</div>\n";
}

void Base::render_menus()
{
    out_ << "<ul class=\"nav\">";
    if (content_.menus.empty())
        out_ << "<h4>No menus</h4>";
    for (const auto& entry : content_.menus)
        render_menu(0, entry, "");
    out_ << "</ul>\n";
}

void Base::render_menu(int level, const data::Menu& entry, const std::string& parentId)
{
    std::string url;
    try {
        url = entry.Url(app_);
    } catch (const web::Error& e) {
        // A plugin's entry for a page it failed to attach must not take every page down.
        PK_WARNING() << "menu entry \"" << entry.GetText() << "\" has no page: " << e.what();
    }
    const bool selected = !url.empty() && app_.request().path() == url;
    if (level == 0) {
        out_ << "<li><div class=\"nav\">";
        Esc(entry.GetText());
        out_ << "</div><ul class=\"nav2\">";
        for (const auto& child : entry.GetChildren())
            render_menu(1, child, "");
        out_ << "</ul></li>\n";
        return;
    }
    if (level == 1) {
        out_ << "<li class=\"" << (selected ? " selected" : "")
             << (entry.GetChildren().empty() ? "" : " parentSideMenu parentSubMenu") << "\"><a id=\"menu_";
        Esc(entry.Id());
        out_ << "\" href=\"";
        Esc(url);
        out_ << "\">";
        Esc(entry.GetText());
        out_ << "</a></li>";
        for (const auto& child : entry.GetChildren())
            render_menu(2, child, "menu_" + entry.Id());
        return;
    }
    out_ << "<li class=\"childSideMenu subMenu hiddenOnLoad" << (selected ? " selected" : "") << " ";
    Esc(parentId);
    out_ << "\"><a href=\"";
    Esc(url);
    out_ << "\">";
    Esc(entry.GetText());
    out_ << "</a></li>";
}

void Base::render_page()
{
}

void Base::render_content()
{
    out_ << "<div id=\"content\"><table id=\"old_ie_hack\" border=\"0\" cellspacing=\"0\"><tr valign=\"top\">"
            "<td class=\"navpx\"><div id=\"nav\">";
    render_menus();
    out_ << "</div></td><td><div id=\"config_pane\" class=\"config_pane\"><h2 id=\"config_page_title\">";
    Esc(content_.title);
    out_ << "</h2>\n";
    render_page();
    out_ << "<div class=\"page_height_cleaner\"></div><div class=\"cleaner\"></div></div></td></tr></table>"
            "<div class=\"clear\"></div></div>\n";
}

void Base::render_footer()
{
    out_ << "<div id=\"footer\">";
    if (!content_.branding.footer_html.empty()) {
        WriteRaw(content_.branding.footer_html);
    } else {
        out_ << "<div class=\"left_footer\">";
        WriteRaw(content_.branding.footer_left_text);
        out_ << "</div><div class=\"right_footer\">";
        Esc(content_.branding.footer_right_text);
        out_ << "</div><br /><div class=\"cleaner\"></div>";
    }
    out_ << "</div>\n";
}

}  // namespace panelkit::views

// panelkit views: the common page layout: head, alerts, message, banner, menus, content pane and footer.
#pragma once

#include "data/Base.h"

#include <json/json.h>

#include <ostream>
#include <string>
#include <vector>

namespace panelkit::web {
class Application;
namespace widgets {
class BaseWidget;
}
}  // namespace panelkit::web

namespace panelkit::views {

/// Renders a whole page around render_page(). Values the page's scripts need are handed
/// to them as JSON data (no inline script), and scripts are static files.
class Base {
public:
    /// A view writing to out for the application that serves the request.
    Base(std::ostream& out, data::Base& content, const web::Application& app);
    virtual ~Base() = default;
    Base(const Base&) = delete;
    Base& operator=(const Base&) = delete;

    /// The whole document.
    virtual void render();
    /// Title, icon, style sheets and scripts.
    virtual void render_head();
    /// The reboot or recovery-image alert, at most one.
    virtual void render_alerts();
    /// The page's result box.
    virtual void render_messages();
    /// The data and script files of the page's behaviour.
    virtual void render_scripts();
    /// The banner.
    virtual void render_banner();
    /// One menu entry at its level (0 group, 1 page, 2 sub-page).
    virtual void render_menu(int level, const data::Menu& entry, const std::string& parentId);
    /// The side menu.
    virtual void render_menus();
    /// The page's own part of the configuration pane (empty here).
    virtual void render_page();
    /// The navigation column and the configuration pane.
    virtual void render_content();
    /// The footer.
    virtual void render_footer();

protected:
    /// Writes text HTML-escaped.
    void Esc(const std::string& text);
    /// Writes markup as it is; only for the branding texts that are meant to be markup.
    void WriteRaw(const std::string& html);
    /// The value handed to the page's scripts under the name.
    Json::Value& ScriptData(const std::string& name);
    /// Adds a script file (a path below the media root) loaded after the common ones.
    void AddScript(const std::string& path);
    /// A widget's input, then the error span when the widget failed.
    void render_input_and_error(const web::widgets::BaseWidget& widget);
    /// A static file's URL: media root + path + the build stamp as revision.
    std::string MediaUrl(const std::string& path);

    std::ostream& out_;
    data::Base& content_;
    const web::Application& app_;

private:
    Json::Value scriptData_{Json::objectValue};
    std::vector<std::string> scriptFiles_;
    std::string revision_;  // the "?rev=" query of media links, made once per page
};

}  // namespace panelkit::views

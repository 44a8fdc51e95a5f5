// panelkit data: what the common layout shows around every page.
#pragma once

#include "data/Menu.h"
#include "data/Message.h"

#include <cstdint>
#include <string>
#include <vector>

namespace panelkit::data {

/// The content every page renders: branding, media roots, title, message, alerts, menus and plugin files.
class Base {
public:
    /// Texts that brand the pages (from the configuration, or a plugin's branding file).
    struct Branding {
        /// Browser window title.
        std::string window_text;
        /// Text in the banner.
        std::string banner_text;
        /// Left footer text (may hold markup).
        std::string footer_left_text;
        /// Right footer text.
        std::string footer_right_text;
        /// Markup replacing the default banner.
        std::string banner_html;
        /// Markup replacing the default footer.
        std::string footer_html;
    };

    virtual ~Base() = default;

    /// The page branding.
    Branding branding;
    /// URL path of the built-in static files ("/media"), or "".
    std::string media_root;
    /// Plugin media root + "/" + the controller's volume name.
    std::string app_media_root;
    /// The one result message of this request.
    Message message;
    /// True when settings wait for a reboot.
    bool reboot_required = false;
    /// Recovery-image alert: 0 none, 1 not up to date, 2 mismatch.
    std::int32_t fw_base_alert = 0;
    /// The side menu.
    std::vector<Menu> menus;
    /// The build stamp, also the revision of the static files.
    std::string build_date;
    /// Plugin style sheet URLs.
    std::vector<std::string> stylesheets;
    /// Plugin script URLs.
    std::vector<std::string> scripts;
    /// The page title.
    std::string title;
    /// True when every input of the page is shown disabled.
    bool read_only = false;
    /// The request-forgery token every form of the page carries.
    std::string csrf_token;
};

/// The content of a page with tabs, whose status tab polls the JSON-RPC endpoint.
class BaseTabbed : public Base {
public:
    /// Zero-based index of the tab opened first.
    std::int32_t selected_tab = 0;
    /// Milliseconds between status polls.
    unsigned refresh_interval = 1000;
    /// The JSON-RPC endpoint the status tab posts to.
    std::string status_url;
};

}  // namespace panelkit::data

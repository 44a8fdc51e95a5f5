// panelkit apps: the base of every page controller: common page content, menus, request helpers, form safety.
#pragma once

#include "data/Base.h"
#include "web/Application.h"

#include <string>
#include <vector>

namespace panelkit::web {
class Form;
}
namespace panelkit::page {
class Page;
}

namespace panelkit::apps {

/// A page controller. Every POST must carry the form token of the page it came from.
class Base : public web::Application {
public:
    /// A controller of the application volume `name` ("" for the built-in pages).
    Base(web::Service& service, const std::string& name);

    /// Refuses a POST without the right form token (403, nothing handled), then dispatches.
    void main(const std::string& url) override;
    /// Fills the common content: branding, menus, media roots, plugin files, build stamp, alerts, form token.
    virtual void Prepare(data::Base& content);
    /// Appends the built-in menu tree ("Network", "Settings").
    virtual void PrepareMenus(std::vector<data::Menu>& menus);
    /// The recovery-image alert: 0 none, 1 not up to date, 2 mismatch.
    int GetFWBaseAlertStatus();
    /// True for a GET request (exactly "GET").
    bool HttpGet();
    /// True for a POST request (exactly "POST").
    bool HttpPost();
    /// True for a PUT request (exactly "PUT").
    bool HttpPut();
    /// The query value of a name, "" when absent.
    std::string HttpGet(const std::string& name);
    /// The posted value of a name, "" when absent.
    std::string HttpPost(const std::string& name);
    /// Loads the form from the request and checks it.
    bool ValidateForm(web::Form& form);
    /// True when the internal HTTP server runs ("service.api" is "http"; throws when missing).
    bool UsingInternalServer();
    /// The application volume name.
    const std::string& GetAppVolumeName() const { return name_; }
    /// The JSON-RPC endpoint the status tabs post to: "/" async root "/" rpc root (throws when unset).
    std::string StatusUrl() const;
    /// Renders the named view of the skin with the content as the response body.
    void render(const std::string& view, data::Base& content);
    /// Maps every page of the table under its name and dispatches its expressions to it, in order.
    void Bind(const std::vector<page::Page>& pages);
    /// Serves a declared page with the groups of its expression.
    void Serve(const page::Page& page, const std::vector<std::string>& args = {});
    /// A menu group of the pages that have an entry, linked below the controller's mount ("/network").
    static data::Menu MenuGroup(const std::string& text, const std::string& mount, const std::vector<page::Page>& pages);

private:
    std::string _FormToken();

    std::string name_;
    std::string token_;
};

}  // namespace panelkit::apps

// panelkit apps: routes of controllers whose pages have not landed yet, each answering with a page that names it.
#pragma once

#include <string>
#include <vector>

namespace panelkit::web {
class Application;
}

namespace panelkit::apps {

/// One route: its mapper name, pattern and expression, and the page title it shows.
struct Route {
    std::string name;
    std::string pattern;
    std::string expression;
    std::string title;
};

/// Registers routes on a controller and renders their pages.
class RoutePage {
public:
    /// Maps every named route and binds its expression, in order, to a page naming it.
    static void Bind(web::Application& app, const std::vector<Route>& routes);
    /// Renders the page of one route of the application; params fill the route's pattern.
    static void Render(web::Application& app, const std::string& title, const std::string& name,
                       const std::vector<std::string>& params = {});
};

}  // namespace panelkit::apps

// panelkit apps: routes of controllers whose pages have not landed yet, each rendering the layout with its title.
#pragma once

#include <string>
#include <vector>

namespace panelkit::apps {

class Base;

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
    /// Maps every named route and binds its expression, in order, to a page with its title.
    static void Bind(Base& app, const std::vector<Route>& routes);
    /// Renders the layout with the route's title; params fill the route's pattern.
    static void Render(Base& app, const std::string& title, const std::string& name,
                       const std::vector<std::string>& params = {});
};

}  // namespace panelkit::apps

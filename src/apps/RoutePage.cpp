// panelkit apps: routes of controllers whose pages have not landed yet, each rendering the layout with its title.
#include "apps/RoutePage.h"

#include "apps/Base.h"

namespace panelkit::apps {

void RoutePage::Bind(Base& app, const std::vector<Route>& routes)
{
    for (const auto& route : routes) {
        if (!route.pattern.empty())
            app.mapper().assign(route.name, route.pattern);
        const std::string title = route.title;
        const std::string name = route.name;
        app.dispatcher().assign(route.expression, [&app, title, name] { Render(app, title, name); });
    }
}

void RoutePage::Render(Base& app, const std::string& title, const std::string& name,
                       const std::vector<std::string>& params)
{
    data::Base content;
    app.Prepare(content);
    content.title = title;
    app.url(name, params);  // every route keeps a working link, or fails loudly here
    app.render("Base", content);
}

}  // namespace panelkit::apps

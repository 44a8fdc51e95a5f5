// panelkit apps: routes of controllers whose pages have not landed yet, each answering with a page that names it.
#include "apps/RoutePage.h"

#include "web/Application.h"
#include "web/Html.h"
#include "web/Response.h"

namespace panelkit::apps {

using web::Html;

void RoutePage::Bind(web::Application& app, const std::vector<Route>& routes)
{
    for (const auto& route : routes) {
        if (!route.pattern.empty())
            app.mapper().assign(route.name, route.pattern);
        const std::string title = route.title;
        const std::string name = route.name;
        app.dispatcher().assign(route.expression, [&app, title, name] { Render(app, title, name); });
    }
}

void RoutePage::Render(web::Application& app, const std::string& title, const std::string& name,
                       const std::vector<std::string>& params)
{
    const std::string link = app.url(name, params);
    app.response().out() << "<!DOCTYPE html>\n<html><head><meta charset=\"utf-8\"><title>" << Html::Escape(title)
                         << "</title></head><body><h1>" << Html::Escape(title) << "</h1><p class=\"route\">"
                         << Html::Escape(link) << "</p></body></html>\n";
}

}  // namespace panelkit::apps

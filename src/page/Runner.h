// panelkit page: the one flow of every declared page: prepare, load, validate, store in order, message, render.
#pragma once

#include <string>
#include <vector>

namespace panelkit::apps {
class Base;
}

namespace panelkit::page {

class Content;
class Page;

/// Serves a request for a declared page on its controller.
class Runner {
public:
    /// Answers the request: the page with its message, or what one of its actions answered.
    static void Serve(apps::Base& app, const Page& page, const std::vector<std::string>& args);

private:
    static bool _Post(apps::Base& app, const Page& page, Content& content, const std::vector<std::string>& args);
    static void _PostForm(apps::Base& app, const Page& page, Content& content, std::size_t index,
                          const std::vector<std::string>& args);
    static void _Render(apps::Base& app, const Page& page, Content& content);
};

}  // namespace panelkit::page

// panelkit web layer: a tree of applications, each with its dispatcher, URL mapper and children.
#include "web/Application.h"

#include "web/Context.h"
#include "web/Error.h"
#include "web/Log.h"
#include "web/Request.h"
#include "web/Response.h"
#include "web/Service.h"

namespace panelkit::web {

Application::Application(Service& service) : service_(service)
{
}

Application::~Application() = default;

void Application::main(const std::string& url)
{
    if (!dispatcher_.dispatch(url))
        notFound(url);
}

void Application::notFound(const std::string& url)
{
    PK_DEBUG() << (name_.empty() ? std::string("root") : name_) << ": no page for " << url;
    response().errorPage(404, "No page at " + request().path());
}

Request& Application::request() const
{
    return Context::Current().request();
}

Response& Application::response() const
{
    return Context::Current().response();
}

const Settings& Application::settings() const
{
    return service_.settings();
}

void Application::attachChild(std::unique_ptr<Application> child, const std::string& name,
                              const std::string& urlPattern, const std::string& regex, int part)
{
    child->parent_ = this;
    child->name_ = name;
    child->attachPattern_ = urlPattern;
    Application* target = child.get();
    dispatcher_.add(regex, {part}, [target](const std::vector<std::string>& groups) { target->main(groups[0]); });
    children_.push_back({std::move(child), name, urlPattern});
    std::lock_guard<std::mutex> guard(linksLock_);
    links_.clear();
}

const Application::Child* Application::child(const std::string& name) const
{
    for (const auto& c : children_)
        if (c.name == name)
            return &c;
    return nullptr;
}

std::string Application::url(const std::string& path, const std::vector<std::string>& params) const
{
    if (!params.empty())
        return build(path, params);
    {
        std::lock_guard<std::mutex> guard(linksLock_);
        const auto known = links_.find(path);
        if (known != links_.end())
            return known->second;
    }
    std::string link = build(path, params);
    std::lock_guard<std::mutex> guard(linksLock_);
    links_.emplace(path, link);
    return link;
}

std::string Application::build(const std::string& path, const std::vector<std::string>& params) const
{
    const Application* start = this;
    std::string rest = path;
    if (!rest.empty() && rest[0] == '/') {
        while (start->parent_)
            start = start->parent_;
        rest.erase(0, 1);
    }
    std::vector<std::string> segments;
    for (std::size_t from = 0; !rest.empty() && from <= rest.size();) {
        const auto slash = rest.find('/', from);
        segments.push_back(rest.substr(from, slash == std::string::npos ? std::string::npos : slash - from));
        if (slash == std::string::npos)
            break;
        from = slash + 1;
    }
    return start->absolute(start->resolve(segments, 0, params, path));
}

std::string Application::resolve(const std::vector<std::string>& segments, std::size_t index,
                                 const std::vector<std::string>& params, const std::string& path) const
{
    if (index == segments.size()) {
        const std::string* own = mapper_.find("");
        return own ? Mapper::Expand(*own, params) : std::string();
    }
    if (const Child* c = child(segments[index]))
        return Mapper::Expand(c->urlPattern, {c->app->resolve(segments, index + 1, params, path)});
    const std::string* pattern = mapper_.find(segments[index]);
    if (pattern && index + 1 == segments.size())
        return Mapper::Expand(*pattern, params);
    throw Error("no URL mapping for " + path);
}

std::string Application::absolute(const std::string& fragment) const
{
    if (!parent_)
        return mapper_.root() + fragment;
    return parent_->absolute(Mapper::Expand(attachPattern_, {fragment}));
}

}  // namespace panelkit::web

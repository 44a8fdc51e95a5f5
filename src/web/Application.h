// panelkit web layer: a tree of applications, each with its dispatcher, URL mapper and children.
#pragma once

#include "web/Dispatcher.h"
#include "web/Mapper.h"

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace panelkit::web {

class Request;
class Response;
class Service;
class Settings;

/// One node of the application tree: dispatches the URL left to it to its own handlers
/// or to an attached child, and builds links through the mappers of the tree.
class Application {
public:
    /// Creates an application of the given service.
    explicit Application(Service& service);
    virtual ~Application();
    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;

    /// Serves the URL left after the mount point or the parent's expression.
    virtual void main(const std::string& url);

    /// The handlers of this application.
    Dispatcher& dispatcher() { return dispatcher_; }
    /// The URL names of this application.
    Mapper& mapper() { return mapper_; }
    /// The URL names of this application.
    const Mapper& mapper() const { return mapper_; }

    /// Takes a child: URLs matching regex go to it with group `part` as its URL, and
    /// links through `name` are built with urlPattern ("/settings{1}"). Returns the child.
    template <class App>
    App& attach(std::unique_ptr<App> child, const std::string& name, const std::string& urlPattern,
                const std::string& regex, int part)
    {
        App& ref = *child;
        attachChild(std::unique_ptr<Application>(std::move(child)), name, urlPattern, regex, part);
        return ref;
    }

    /// The request being served on this thread.
    Request& request() const;
    /// The response being built on this thread.
    Response& response() const;
    /// The service this application belongs to.
    Service& service() { return service_; }
    /// The service's settings.
    const Settings& settings() const;
    /// The application this one is attached to, or nullptr.
    Application* parent() const { return parent_; }
    /// The name this application was attached under ("" for the top).
    const std::string& name() const { return name_; }

    /// Builds a link: "/settings/reboot" from the top of the tree, "reboot" from this
    /// application; each segment names a child or, last, a mapper entry; params fill {1}...
    /// Links without params are remembered: the tree is complete before the first request.
    std::string url(const std::string& path, const std::vector<std::string>& params = {}) const;

protected:
    /// Answers 404 with a small page; called when no handler matches.
    virtual void notFound(const std::string& url);

private:
    struct Child {
        std::unique_ptr<Application> app;
        std::string name;
        std::string urlPattern;
    };

    void attachChild(std::unique_ptr<Application> child, const std::string& name, const std::string& urlPattern,
                     const std::string& regex, int part);
    const Child* child(const std::string& name) const;
    std::string resolve(const std::vector<std::string>& segments, std::size_t index,
                        const std::vector<std::string>& params, const std::string& path) const;
    std::string absolute(const std::string& fragment) const;
    std::string build(const std::string& path, const std::vector<std::string>& params) const;

    Service& service_;
    Dispatcher dispatcher_;
    Mapper mapper_;
    std::vector<Child> children_;
    Application* parent_ = nullptr;
    std::string name_;
    std::string attachPattern_;
    // Every page links to every menu entry; shared applications build links on several threads.
    mutable std::mutex linksLock_;
    mutable std::map<std::string, std::string> links_;
};

}  // namespace panelkit::web

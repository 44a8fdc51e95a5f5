// panelkit web layer: the mounted application trees and the instances that serve them.
#pragma once

#include "web/MountPoint.h"

#include <Poco/Semaphore.h>

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace panelkit::web {

class Application;
class Service;

/// Mount points tried in mount order. A synchronous mount builds applications with its
/// factory, one per worker at most, and reuses them; an asynchronous mount holds one
/// shared application whose handlers run concurrently.
class ApplicationsPool {
public:
    /// Builds a synchronous application.
    using Factory = std::function<std::unique_ptr<Application>(Service&)>;

    /// A pool for the service, running at most `workers` synchronous handlers at once.
    ApplicationsPool(Service& service, int workers);
    ~ApplicationsPool();
    ApplicationsPool(const ApplicationsPool&) = delete;
    ApplicationsPool& operator=(const ApplicationsPool&) = delete;

    /// Mounts a synchronous application tree.
    void mount(Factory factory, MountPoint point);
    /// Mounts one shared application; its handlers must be thread-safe.
    void mountAsync(std::shared_ptr<Application> application, MountPoint point);
    /// Serves the path of the current request; false when no mount point matches.
    bool serve(const std::string& path);

private:
    struct Mount;

    void serveSynchronous(Mount& mount, const std::string& url);

    Service& service_;
    Poco::Semaphore workers_;
    std::vector<std::unique_ptr<Mount>> mounts_;
};

}  // namespace panelkit::web

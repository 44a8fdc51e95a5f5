// panelkit web layer: the mounted application trees and the instances that serve them.
#include "web/ApplicationsPool.h"

#include "web/Application.h"

namespace panelkit::web {

struct ApplicationsPool::Mount {
    MountPoint point;
    Factory factory;
    std::shared_ptr<Application> shared;
    std::mutex lock;
    std::vector<std::unique_ptr<Application>> idle;
};

ApplicationsPool::ApplicationsPool(Service& service, int workers) : service_(service), workers_(workers)
{
}

ApplicationsPool::~ApplicationsPool() = default;

void ApplicationsPool::mount(Factory factory, MountPoint point)
{
    mounts_.push_back(std::unique_ptr<Mount>(new Mount{std::move(point), std::move(factory), nullptr, {}, {}}));
}

void ApplicationsPool::mountAsync(std::shared_ptr<Application> application, MountPoint point)
{
    mounts_.push_back(std::unique_ptr<Mount>(new Mount{std::move(point), nullptr, std::move(application), {}, {}}));
}

bool ApplicationsPool::serve(const std::string& path)
{
    std::string url;
    for (auto& mount : mounts_) {
        if (!mount->point.match(path, url))
            continue;
        if (mount->shared)
            mount->shared->main(url);
        else
            serveSynchronous(*mount, url);
        return true;
    }
    return false;
}

void ApplicationsPool::serveSynchronous(Mount& mount, const std::string& url)
{
    // The semaphore bounds the instances: a worker slot is taken before an instance is.
    workers_.wait();
    struct Slot {
        Poco::Semaphore& semaphore;
        ~Slot() { semaphore.set(); }
    } slot{workers_};

    std::unique_ptr<Application> app;
    {
        std::lock_guard<std::mutex> lock(mount.lock);
        if (!mount.idle.empty()) {
            app = std::move(mount.idle.back());
            mount.idle.pop_back();
        }
    }
    if (!app)
        app = mount.factory(service_);
    struct Return {
        Mount& mount;
        std::unique_ptr<Application>& app;
        ~Return()
        {
            std::lock_guard<std::mutex> lock(mount.lock);
            mount.idle.push_back(std::move(app));
        }
    } giveBack{mount, app};
    app->main(url);
}

}  // namespace panelkit::web

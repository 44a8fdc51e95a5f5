// panelkit web layer: the FastCGI front end (libfcgi), for running behind the device's web server.
#pragma once

#include "web/Frontend.h"

#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace panelkit::web {

class Service;

/// Listens on "service.socket" (a Unix socket path) or "service.ip":"service.port",
/// with "service.worker_threads" threads accepting in turn.
class FastCgiFrontend : public Frontend {
public:
    /// A front end for the service.
    explicit FastCgiFrontend(Service& service);
    ~FastCgiFrontend() override;
    void start() override;
    void stop() override;

private:
    void work();
    bool waitForConnection();

    Service& service_;
    std::string socketPath_;
    int listenFd_ = -1;
    int wakeFds_[2] = {-1, -1};
    std::mutex acceptLock_;
    std::vector<std::thread> workers_;
};

}  // namespace panelkit::web

// panelkit web layer: the FastCGI front end (libfcgi), for running behind the device's web server.
#pragma once

#include "web/Frontend.h"

#include <atomic>
#include <string>
#include <thread>
#include <vector>

namespace panelkit::web {

class Service;

/// Listens on "service.socket" (a Unix socket path) or "service.ip":"service.port",
/// with "service.worker_threads" threads, each waiting in accept for the next connection.
class FastCgiFrontend : public Frontend {
public:
    /// A front end for the service.
    explicit FastCgiFrontend(Service& service);
    ~FastCgiFrontend() override;
    void start() override;
    void stop() override;

private:
    void work();

    Service& service_;
    std::string socketPath_;
    int listenFd_ = -1;
    std::atomic<bool> stopping_{false};
    std::vector<std::thread> workers_;
};

}  // namespace panelkit::web

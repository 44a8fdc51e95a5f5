// panelkit web layer: the service of one pass of the process: settings, mounted applications, front end.
#pragma once

#include "web/ApplicationsPool.h"
#include "web/Limits.h"
#include "web/Settings.h"

#include <atomic>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace panelkit::web {

class FileServer;
class Request;
class Response;

/// Serves the mounted applications through the configured front end ("service.api":
/// "http" or "fastcgi") until shutdown() or a termination signal.
class Service {
public:
    /// Reads the settings from the command line ("-c FILE", "--KEY=VALUE").
    Service(int argc, const char* const argv[]);
    /// Uses the given settings.
    explicit Service(Settings settings);
    ~Service();
    Service(const Service&) = delete;
    Service& operator=(const Service&) = delete;

    /// The settings of this service.
    const Settings& settings() const { return settings_; }
    /// The mounted applications.
    ApplicationsPool& applicationsPool() { return *pool_; }
    /// The body limits and the upload folder.
    const Limits& limits() const { return limits_; }
    /// Sets the folder uploaded files are streamed into.
    void uploadDirectory(const std::string& directory) { limits_.uploadDirectory = directory; }
    /// Answers a path that no mount point takes.
    using FileHandler = std::function<bool(const std::string& rest, Response& response)>;
    /// In "http" mode, lets a handler answer the unmounted paths below the prefix (given the rest of the path).
    void serveFiles(const std::string& prefix, FileHandler handler) { fileHandlers_.emplace_back(prefix, std::move(handler)); }
    /// In "http" mode, answers "/" with a redirect to this location.
    void redirectRoot(const std::string& location) { rootRedirect_ = location; }
    /// The number of worker threads ("service.worker_threads", default 4).
    int workerThreads() const { return workers_; }

    /// Serves until shutdown() is called or SIGTERM/SIGINT arrives; requests in flight complete.
    void run();
    /// Asks run() to return; safe from any thread, including a handler.
    void shutdown();

    /// Serves one parsed request; the front ends call it on their worker threads.
    void handle(Request& request, Response& response);

private:
    void serveUnmounted(Request& request, Response& response);

    Settings settings_;
    std::string api_;
    int workers_;
    Limits limits_;
    std::string rootRedirect_;
    std::unique_ptr<ApplicationsPool> pool_;
    std::unique_ptr<FileServer> files_;
    std::vector<std::pair<std::string, FileHandler>> fileHandlers_;
    std::mutex stopLock_;
    std::condition_variable stopSignal_;
    bool stopping_ = false;
};

}  // namespace panelkit::web

// panelkit web layer: the internal HTTP server front end (POCO's HTTPServer).
#pragma once

#include "web/Frontend.h"

#include <memory>

namespace Poco {
class ThreadPool;
namespace Net {
class HTTPServer;
}
}  // namespace Poco

namespace panelkit::web {

class Service;

/// Listens on "service.ip":"service.port" with a fixed pool of connection threads.
class HttpFrontend : public Frontend {
public:
    /// A front end for the service.
    explicit HttpFrontend(Service& service);
    ~HttpFrontend() override;
    void start() override;
    void stop() override;

private:
    Service& service_;
    std::unique_ptr<Poco::ThreadPool> threads_;
    std::unique_ptr<Poco::Net::HTTPServer> server_;
};

}  // namespace panelkit::web

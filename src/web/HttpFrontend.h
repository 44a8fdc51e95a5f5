// panelkit web layer: the internal HTTP server front end: HTTP/1.1 with keep-alive on POCO's TCP server.
#pragma once

#include "web/Frontend.h"

#include <memory>

namespace Poco {
class ThreadPool;
namespace Net {
class ServerSocket;
class TCPServer;
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

    class Connections;

private:
    Service& service_;
    std::unique_ptr<Poco::ThreadPool> threads_;
    std::unique_ptr<Poco::Net::ServerSocket> listener_;
    std::unique_ptr<Connections> connections_;
    std::unique_ptr<Poco::Net::TCPServer> server_;
};

}  // namespace panelkit::web

// panelkit web layer: a way of receiving requests (internal HTTP server or FastCGI).
#pragma once

namespace panelkit::web {

/// Accepts requests on its own worker threads and hands them to the service.
class Frontend {
public:
    virtual ~Frontend() = default;
    /// Opens the listening socket and starts the workers; throws when it cannot listen.
    virtual void start() = 0;
    /// Stops accepting, lets requests in flight complete, joins the workers and closes the socket.
    virtual void stop() = 0;
};

}  // namespace panelkit::web

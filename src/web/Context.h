// panelkit web layer: the request being served on this thread.
#pragma once

namespace panelkit::web {

class Request;
class Response;

/// The request and response of the current thread; set by the service around each call
/// into an application, so that shared (asynchronous) applications serve requests concurrently.
class Context {
public:
    /// Makes the pair current on this thread until the object is destroyed.
    Context(Request& request, Response& response);
    ~Context();
    Context(const Context&) = delete;
    Context& operator=(const Context&) = delete;

    /// The context of this thread; throws when no request is being served.
    static Context& Current();
    /// True while a request is being served on this thread.
    static bool Active();

    /// The request being served.
    Request& request() { return request_; }
    /// The response being built.
    Response& response() { return response_; }

private:
    Request& request_;
    Response& response_;
    Context* previous_;
};

}  // namespace panelkit::web

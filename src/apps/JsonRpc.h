// panelkit apps: the JSON-RPC status service the page scripts poll.
#pragma once

#include "web/JsonRpcServer.h"

namespace panelkit::apps {

/// Answers the status methods by name; shared by all workers, so every handler is thread-safe.
class JsonRpc : public web::JsonRpcServer {
public:
    /// Binds the methods.
    explicit JsonRpc(web::Service& service);
    /// "reload": sets the forced-reload flag and shuts the service down, so the main loop rebuilds it.
    void Reload();
};

}  // namespace panelkit::apps

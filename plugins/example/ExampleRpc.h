// Example plugin: a JSON-RPC method on the asynchronous tree.
#pragma once

#include "web/JsonRpcServer.h"

namespace example {

/// Answers "example_status"; shared by every worker, and keeps no state.
class ExampleRpc : public panelkit::web::JsonRpcServer {
public:
    /// Binds the method.
    explicit ExampleRpc(panelkit::web::Service& service);
    /// The stored site name and the plugin's name.
    void Status();
};

}  // namespace example

// panelkit apps: the root of the synchronous page tree.
#pragma once

#include "web/Application.h"

#include <string>

namespace panelkit::apps {

/// Attaches the page controllers under their URL patterns, sends the bare root to the
/// General page, and diverts everything to the upgrade status page while an upgrade runs.
class Panelkit : public web::Application {
public:
    /// Builds the controllers of one pooled worker.
    explicit Panelkit(web::Service& service);
    void main(const std::string& url) override;
    /// Mounts the page tree under "/" + sync, and the asynchronous container under "/" + async with
    /// the JSON-RPC service at "/" + rpc and the plugins' applications beside it.
    static void Mount(web::Service& service);
};

}  // namespace panelkit::apps

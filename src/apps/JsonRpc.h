// panelkit apps: the JSON-RPC status service the page scripts poll.
#pragma once

#include "web/JsonRpcServer.h"

#include <vector>

namespace panelkit::page {
class Page;
}

namespace panelkit::apps {

/// Answers the status methods by name; shared by all workers, so every handler is thread-safe.
class JsonRpc : public web::JsonRpcServer {
public:
    /// Binds the methods of the service and the status method of every page that declares one.
    explicit JsonRpc(web::Service& service);
    /// "fw_upgrade_status": the firmware tool's status line, or the failed state.
    void FirmwareUpgradeStatus();
    /// "reload": sets the forced-reload flag and shuts the service down, so the main loop rebuilds it.
    void Reload();
    /// "prepare_fw_upgrade": suspends the deployer's watchdog before an upload; the shell's status.
    void PrepareFWUpgrade();
    /// Binds the status method of each page that declares one: an object of its blocks' texts.
    void BindStatus(const std::vector<page::Page>& pages);
};

}  // namespace panelkit::apps

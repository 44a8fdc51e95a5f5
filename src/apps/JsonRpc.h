// panelkit apps: the JSON-RPC status service the page scripts poll.
#pragma once

#include "web/JsonRpcServer.h"

namespace panelkit::apps {

/// Answers the status methods by name; shared by all workers, so every handler is thread-safe.
class JsonRpc : public web::JsonRpcServer {
public:
    /// Binds the methods.
    explicit JsonRpc(web::Service& service);
    /// "fw_upgrade_status": the firmware tool's status line, or the failed state.
    void FirmwareUpgradeStatus();
    /// "general_dynamic_status": date, uptime, processes and the board temperature.
    void GeneralStatus();
    /// "ethernet1_status": bridge and Ethernet interface state.
    void Ethernet1Status();
    /// "tail_syslog": the last 30 lines of the system log.
    void TailSyslog();
    /// "dns_server_status": the resolver configuration.
    void DnsServerStatus();
    /// "reload": sets the forced-reload flag and shuts the service down, so the main loop rebuilds it.
    void Reload();
    /// "prepare_fw_upgrade": suspends the deployer's watchdog before an upload; the shell's status.
    void PrepareFWUpgrade();
    /// The board temperature text for a hardware-monitor reading in millidegrees.
    static std::string BoardTemperature(const std::string& reading);
};

}  // namespace panelkit::apps

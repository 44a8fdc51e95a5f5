// panelkit apps: the JSON-RPC status service the page scripts poll.
#include "apps/JsonRpc.h"

#include "util/Commands.h"
#include "util/DevicePath.h"
#include "util/Files.h"
#include "util/FlagFiles.h"
#include "util/Pardb.h"
#include "web/Log.h"
#include "web/Service.h"

#include <cstdio>
#include <cstdlib>

namespace panelkit::apps {

JsonRpc::JsonRpc(web::Service& service) : web::JsonRpcServer(service)
{
    bind("fw_upgrade_status", &JsonRpc::FirmwareUpgradeStatus, this);
    bind("general_dynamic_status", &JsonRpc::GeneralStatus, this);
    bind("ethernet1_status", &JsonRpc::Ethernet1Status, this);
    bind("tail_syslog", &JsonRpc::TailSyslog, this);
    bind("dns_server_status", &JsonRpc::DnsServerStatus, this);
    bind("reload", &JsonRpc::Reload, this);
    bind("prepare_fw_upgrade", &JsonRpc::PrepareFWUpgrade, this);
}

std::string JsonRpc::BoardTemperature(const std::string& reading)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.1f degrees Celsius\n", static_cast<float>(std::atoi(reading.c_str())) / 1000.0f);
    return text;
}

void JsonRpc::GeneralStatus()
{
    Json::Value result(Json::objectValue);
    result["date"] = util::ShellCommand("date", 4096);
    result["uptime"] = util::ShellCommand("uptime", 4096);
    result["top"] = util::ShellCommand("top -b -n1", 4096);
    result["processStatus"] = util::ShellCommand("ps -ef", 10000);
    result["boardTemp"] =
        BoardTemperature(util::ShellCommand("cat " + util::ShellDevicePath("/sys/class/hwmon/hwmon0/temp1_input"), 4096));
    return_result(result);
}

void JsonRpc::Ethernet1Status()
{
    Json::Value result(Json::objectValue);
    result["br1"] = util::ShellCommand("ifconfig br1", 4096);
    result["brctl"] = util::ShellCommand("brctl show", 4096);
    result["eth1"] = util::ShellCommand("ifconfig eth0", 4096);
    result["ethtool"] = util::ShellCommand("ethtool eth0", 4096);
    return_result(result);
}

void JsonRpc::TailSyslog()
{
    const char* log = util::Pardb::GetString("syslogd/persistent") == "yes" ? "/home/root/log/messages" : "/var/log/messages";
    Json::Value result(Json::objectValue);
    result["tail"] = util::TailFile(util::DevicePath(log), 30, 8096);
    return_result(result);
}

void JsonRpc::DnsServerStatus()
{
    Json::Value result(Json::objectValue);
    result["currentConf"] = util::ShellCommand("cat " + util::ShellDevicePath("/etc/resolv.conf") + " 2>&1", 4096);
    return_result(result);
}

void JsonRpc::Reload()
{
    util::MarkForceReload(true);
    service().shutdown();
}

void JsonRpc::PrepareFWUpgrade()
{
    // So that the watchdog does not restart the deployer while the image comes in.
    return_result(util::RunStatus({"vigild", "--suspend", "deployer"}));
}

void JsonRpc::FirmwareUpgradeStatus()
{
    bool opened = false;
    const std::string line = util::ReadFirmwareStatusLine(opened);
    if (!util::IsFirmareUpgradeInProgress() && (!opened || line.find("done") == std::string::npos)) {
        PK_ERROR() << "firmware upgrade failed";
        return_result("{ 'state' : 'failed' }");
        return;
    }
    return_result(line);
}

}  // namespace panelkit::apps

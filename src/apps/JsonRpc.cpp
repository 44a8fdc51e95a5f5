// panelkit apps: the JSON-RPC status service the page scripts poll.
#include "apps/JsonRpc.h"

#include "apps/Network.h"
#include "apps/Settings.h"
#include "page/Page.h"
#include "util/Commands.h"
#include "util/DevicePath.h"
#include "util/Files.h"
#include "util/FlagFiles.h"
#include "util/Pardb.h"
#include "web/Log.h"
#include "web/Service.h"

#include <atomic>

namespace panelkit::apps {

JsonRpc::JsonRpc(web::Service& service) : web::JsonRpcServer(service)
{
    bind("fw_upgrade_status", &JsonRpc::FirmwareUpgradeStatus, this);
    bind("reload", &JsonRpc::Reload, this);
    bind("prepare_fw_upgrade", &JsonRpc::PrepareFWUpgrade, this);
    BindStatus(Settings::Pages());
    BindStatus(Network::Pages());
}

void JsonRpc::BindStatus(const std::vector<page::Page>& pages)
{
    for (const auto& page : pages) {
        if (page.StatusMethod().empty())
            continue;
        bind(page.StatusMethod(), 0, [this, &page](const Json::Value&) { return_result(page.StatusReply()); });
    }
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
    // Told once per outcome: a page left open polls every second.
    static std::atomic<bool> failureLogged{false};
    if (!util::IsFirmareUpgradeInProgress() && (!opened || line.find("done") == std::string::npos)) {
        if (!failureLogged.exchange(true))
            PK_ERROR() << "firmware upgrade failed";
        return_result("{ 'state' : 'failed' }");
        return;
    }
    failureLogged = false;
    return_result(line);
}

}  // namespace panelkit::apps

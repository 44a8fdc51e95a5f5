// panelkit apps: the JSON-RPC status service the page scripts poll.
#include "apps/JsonRpc.h"

#include "apps/Network.h"
#include "apps/Settings.h"
#include "page/Page.h"
#include "util/DevicePath.h"
#include "util/Pardb.h"
#include "util/Commands.h"
#include "util/Environment.h"
#include "util/Files.h"
#include "util/FlagFiles.h"
#include "web/Log.h"
#include "web/Service.h"

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

namespace panelkit::apps {

JsonRpc::JsonRpc(web::Service& service) : web::JsonRpcServer(service)
{
    bind("fw_upgrade_status", &JsonRpc::FirmwareUpgradeStatus, this);
    bind("tail_syslog", &JsonRpc::TailSyslog, this);
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
        bind(page.StatusMethod(), 0, [this, &page](const Json::Value&) {
            Json::Value result(Json::objectValue);
            for (const auto& block : page.StatusBlocks())
                result[block.member] = block.make();
            return_result(result);
        });
    }
}

void JsonRpc::TailSyslog()
{
    const char* log = util::Pardb::GetString("syslogd/persistent") == "yes" ? "/home/root/log/messages" : "/var/log/messages";
    Json::Value result(Json::objectValue);
    result["tail"] = util::ShellCommand("tail -n 30 " + util::ShellDevicePath(log), 8096);
    return_result(result);
}

void JsonRpc::Reload()
{
    util::MarkForceReload(true);
    service().shutdown();
}

void JsonRpc::PrepareFWUpgrade()
{
    return_result(std::system("vigild --suspend deployer"));
}

void JsonRpc::FirmwareUpgradeStatus()
{
    const std::string path = util::DevicePath("/tmp/fwtool_status.txt");
    std::string line;
    const int fd = ::open(path.c_str(), O_RDONLY);
    if (fd >= 0) {
        // The tool rewrites the file under a write lock: read it whole or not at all.
        struct flock lock {};
        lock.l_type = F_RDLCK;
        lock.l_whence = SEEK_SET;
        ::fcntl(fd, F_SETLKW, &lock);
        char buffer[100] = {};
        const ssize_t got = ::read(fd, buffer, sizeof buffer - 1);
        ::close(fd);
        line.assign(buffer, got > 0 ? static_cast<std::size_t>(got) : 0);
        line = line.substr(0, line.find('\n'));
    }
    if (!util::IsFirmareUpgradeInProgress() && (fd < 0 || line.find("done") == std::string::npos)) {
        PK_ERROR() << "firmware upgrade failed";
        return_result("{ 'state' : 'failed' }");
        return;
    }
    return_result(line);
}

}  // namespace panelkit::apps

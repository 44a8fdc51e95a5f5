// The status service of the real binary on a simulated device: its URL, the service's own methods,
// notifications, and the firmware tool's state.
#include "Http.h"
#include "DeviceServerTest.h"
#include "Server.h"

#include <gtest/gtest.h>
#include <json/json.h>

#include <cstdio>

using namespace panelkit::test;

namespace {

bool Has(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

using StatusService = DeviceServerTest;

const char kEthernet[] = "/config/network/ethernet1";
const char kDns[] = "/config/network/dns_server";
const char kGeneral[] = "/config/settings/general";

}  // namespace

TEST_F(StatusService, TabbedPagesPostToTheConfiguredStatusUrl)
{
    for (const char* path : {kEthernet, kDns, kGeneral})
        EXPECT_TRUE(Has(Get(server_.port(), path).body, "\"url\":\"/async/rpc\"")) << path;
}

TEST(StatusUrl, FollowsTheAsynchronousRootAndTheRpcName)
{
    Server server;
    server.config()["panelkit"]["root"]["async"] = "status";
    server.config()["panelkit"]["root"]["rpc"] = "json";
    ASSERT_TRUE(server.start()) << server.log();
    for (const char* path : {kEthernet, kDns, kGeneral})
        EXPECT_TRUE(Has(Get(server.port(), path).body, "\"url\":\"/status/json\"")) << path;
    EXPECT_EQ(200, Rpc(server.port(), "/status/json", "dns_server_status").status);
}

TEST_F(StatusService, TailSyslogReadsThePersistentLogOnlyForLowerCaseYes)
{
    server_.writeDeviceFile("/var/log/messages", "volatile line\n");
    server_.writeDeviceFile("/home/root/log/messages", "persistent line\n");
    ASSERT_TRUE(server_.storeSet("syslogd/persistent", "Yes"));
    EXPECT_EQ("volatile line\n", Call("tail_syslog")["tail"].asString());
    ASSERT_TRUE(server_.storeSet("syslogd/persistent", "yes"));
    EXPECT_EQ("persistent line\n", Call("tail_syslog")["tail"].asString());
}

TEST_F(StatusService, PrepareFirmwareUpgradeSuspendsTheDeployer)
{
    EXPECT_EQ(0, Call("prepare_fw_upgrade").asInt());
    EXPECT_TRUE(Has(CommandLog(), "/usr/bin/vigild --suspend deployer\n"));
}

TEST(PrepareFirmwareUpgrade, WithoutTheWatchdogToolAnswersTheShellStatus)
{
    Server server;
    ASSERT_TRUE(server.start()) << server.log();
    const HttpReply reply = Rpc(server.port(), "/async/rpc", "prepare_fw_upgrade");
    EXPECT_EQ(R"({"error":null,"id":1,"result":32512})", reply.body);
}

TEST_F(StatusService, NotificationsOfTheStatusMethodsAreNotServed)
{
    for (const char* method : {"general_dynamic_status", "ethernet1_status", "dns_server_status", "tail_syslog",
                               "prepare_fw_upgrade", "fw_upgrade_status"}) {
        const HttpReply reply = Http(server_.port(), "POST", "/async/rpc",
                                     std::string(R"({"method":")") + method + R"(","params":[]})", "application/json");
        EXPECT_EQ(400, reply.status) << method;
        EXPECT_TRUE(Has(reply.body, "Notifications are not served")) << method;
        EXPECT_TRUE(Has(reply.body, "\"result\":null")) << reply.body;
    }
    EXPECT_FALSE(Has(CommandLog(), "vigild"));
}

TEST_F(StatusService, FirmwareUpgradeStatusReportsFailureWithoutAStatusFile)
{
    EXPECT_EQ("{ 'state' : 'failed' }", Call("fw_upgrade_status").asString());
    EXPECT_TRUE(Has(server_.log(), "firmware upgrade failed"));
    server_.writeDeviceFile("/tmp/fwtool_status.txt", "{ 'state' : 'done' }\nsecond line\n");
    EXPECT_EQ("{ 'state' : 'done' }", Call("fw_upgrade_status").asString());
}

TEST_F(StatusService, FirmwareFailureIsLoggedOncePerOutcomeNotOnEveryPoll)
{
    const auto failures = [this] {
        const std::string log = server_.log();
        int count = 0;
        for (auto at = log.find("firmware upgrade failed"); at != std::string::npos;
             at = log.find("firmware upgrade failed", at + 1))
            ++count;
        return count;
    };
    for (int poll = 0; poll < 5; ++poll)
        EXPECT_EQ("{ 'state' : 'failed' }", Call("fw_upgrade_status").asString());
    EXPECT_EQ(1, failures());
    server_.writeDeviceFile("/tmp/fwtool_status.txt", "{ 'state' : 'done' }\n");
    Call("fw_upgrade_status");
    ASSERT_EQ(0, std::remove(server_.devicePath("/tmp/fwtool_status.txt").c_str()));
    Call("fw_upgrade_status");
    Call("fw_upgrade_status");
    EXPECT_EQ(2, failures()) << "a new failure after a success is told again";
}

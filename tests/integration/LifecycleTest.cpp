// The process's life: forced reload, orderly exit, a failed start, and a firmware upgrade requested before start.
#include "Http.h"
#include "Server.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstdlib>

using namespace panelkit::test;

TEST(Lifecycle, ReloadKeepsThePidLogsTheReloadAndServesAgain)
{
    Server server;
    ASSERT_TRUE(server.start()) << server.log();
    const int pid = server.process().pid();

    const HttpReply reply = Rpc(server.port(), "/async/rpc", "reload");
    EXPECT_EQ(200, reply.status);
    ASSERT_TRUE(WaitForText(server.logPath(), "panelkit ** forced reload **", 10000)) << server.log();
    ASSERT_TRUE(server.waitReady()) << server.log();

    EXPECT_TRUE(server.process().running());
    EXPECT_EQ(pid, server.process().pid());
    EXPECT_EQ(200, Get(server.port(), "/config/").status);
    EXPECT_FALSE(server.work().exists("device/tmp/panelkit_freload_flag"));
}

namespace {

int Count(const std::string& text, const std::string& part)
{
    int count = 0;
    for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++count;
    return count;
}

}  // namespace

TEST(Lifecycle, PortZeroIsTheKernelsChoiceAnnouncedOnceAndKeptOverAReload)
{
    Server server;
    ASSERT_EQ(0, server.config()["service"]["port"].asInt());
    ASSERT_TRUE(server.start()) << server.log();
    const int port = server.port();
    ASSERT_NE(0, port);
    const std::string announced = "listening on http://127.0.0.1:" + std::to_string(port) + " ";
    EXPECT_EQ(1, Count(server.log(), "listening on ")) << server.log();
    EXPECT_EQ(1, Count(server.log(), announced)) << server.log();

    ASSERT_EQ(200, Rpc(port, "/async/rpc", "reload").status);
    ASSERT_TRUE(WaitForText(server.logPath(), "panelkit ** forced reload **", 10000)) << server.log();
    ASSERT_TRUE(server.waitReady()) << server.log();
    EXPECT_EQ(port, server.port());
    EXPECT_EQ(2, Count(server.log(), announced)) << server.log();
    EXPECT_EQ(200, Get(port, "/config/").status);
}

TEST(Lifecycle, FastCgiOverTcpOnPortZeroAnnouncesItsPort)
{
    Server server("fastcgi");
    server.config()["service"].removeMember("socket");
    server.start(false);
    ASSERT_TRUE(WaitForText(server.logPath(), "listening on fastcgi://127.0.0.1:", 20000)) << server.log();
    const std::string log = server.log();
    const auto at = log.find("listening on fastcgi://127.0.0.1:") + std::string("listening on fastcgi://127.0.0.1:").size();
    const int port = std::atoi(log.substr(at, log.find(' ', at) - at).c_str());
    ASSERT_GT(port, 0) << log;
    EXPECT_TRUE(WaitForPort(port, 5000, &server.process())) << log;
}

TEST(Lifecycle, ShutdownWithoutTheReloadFlagExitsWithStatusZero)
{
    Server server;
    ASSERT_TRUE(server.start()) << server.log();
    EXPECT_EQ(0, server.process().stop(SIGTERM));
    EXPECT_NE(std::string::npos, server.log().find("panelkit exit")) << server.log();
    EXPECT_EQ(std::string::npos, server.log().find("forced reload"));
}

TEST(Lifecycle, MissingRpcPrefixLogsTheExceptionAndExitsWithStatusOne)
{
    Server server;
    server.config()["panelkit"]["root"].removeMember("rpc");
    server.start(false);
    EXPECT_EQ(1, server.process().wait(20000)) << server.log();
    EXPECT_NE(std::string::npos, server.log().find("Exception: ")) << server.log();
    EXPECT_NE(std::string::npos, server.log().find("panelkit.root.rpc")) << server.log();
}

TEST(Lifecycle, BrokenConfigurationLogsTheExceptionAndExitsWithStatusOne)
{
    Server server;
    server.config()["service"]["api"] = "carrier-pigeon";
    server.start(false);
    EXPECT_EQ(1, server.process().wait(20000)) << server.log();
    EXPECT_NE(std::string::npos, server.log().find("Exception: service.api")) << server.log();
}

TEST(Lifecycle, FirmwareFlagAtStartRemovesTheFlagAndStartsTheFirmwareTool)
{
    Server server;
    server.writeDeviceFile("/tmp/panelkit_fwsugd_flag", "");
    server.writeDeviceFile("/usr/bin/fwtool",
                           "#!/bin/sh\necho \"$@\" > \"$(dirname \"$0\")/../../tmp/fwtool-args\"\n", true);
    // An application volume whose init script must be stopped before the tool runs.
    server.work().write("apps/demo/etc/init.d/rcS", "#!/bin/sh\necho \"$1\" > \"$(dirname \"$0\")/stopped\"\n", true);
    server.env()["MOUNT_DIR"] = server.work() / "apps";

    const auto started = std::chrono::steady_clock::now();
    ASSERT_TRUE(server.start()) << server.log();
    const auto waited = std::chrono::steady_clock::now() - started;

    EXPECT_GE(waited, std::chrono::seconds(4)) << "the service must start only after the upgrade had its 4 seconds";
    EXPECT_FALSE(server.work().exists("device/tmp/panelkit_fwsugd_flag"));
    ASSERT_TRUE(WaitForText(server.devicePath("/tmp/fwtool-args"), "--upgrade", 5000));
    EXPECT_EQ("--upgrade  --delete --create-ubi-volume --unmount-ubi-volume\n",
              server.work().read("device/tmp/fwtool-args"));
    EXPECT_EQ("stop\n", server.work().read("apps/demo/etc/init.d/stopped"));
}

TEST(Lifecycle, NoFirmwareFlagStartsNoTool)
{
    Server server;
    server.writeDeviceFile("/usr/bin/fwtool", "#!/bin/sh\ntouch \"$(dirname \"$0\")/../../tmp/fwtool-ran\"\n", true);
    ASSERT_TRUE(server.start()) << server.log();
    EXPECT_EQ(200, Get(server.port(), "/config/").status);
    EXPECT_FALSE(server.work().exists("device/tmp/fwtool-ran"));
    EXPECT_NE(std::string::npos, server.log().find("panelkit start"));
}

TEST(Lifecycle, UpgradeInProgressDivertsEveryPageToTheUpgradeStatus)
{
    Server server;
    // An unlocked lock file: the tool is not running.
    server.writeDeviceFile("/tmp/fwtool_6v1Znb.lock", "");
    ASSERT_TRUE(server.start()) << server.log();
    EXPECT_EQ(std::string::npos, Get(server.port(), "/config/network/wlan").body.find("fw_progress_page"));
    // A lock file that cannot be checked counts as an upgrade in progress: a folder cannot be opened for writing.
    ASSERT_EQ(0, std::remove(server.devicePath("/tmp/fwtool_6v1Znb.lock").c_str()));
    server.work().write("device/tmp/fwtool_6v1Znb.lock/inside", "");
    for (const std::string path : {"/config/network/wlan", "/config/", "/config/settings/about"}) {
        const HttpReply reply = Get(server.port(), path);
        EXPECT_EQ(200, reply.status) << path;
        EXPECT_NE(std::string::npos, reply.body.find("<div id=\"fw_progress_page\">")) << path << ": " << reply.body;
    }
}

// A firmware upgrade end to end on the real binary: upload, restart, the simulated tool's progress and its end.
#include "Http.h"
#include "Server.h"

#include <gtest/gtest.h>
#include <json/json.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <thread>

using namespace panelkit::test;

namespace {

const std::string kMagic("\xD0\x0D\xFE\xED", 4);

class FirmwareUpgrade : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(server_.simulateDevice());
        // Long enough to outlast the 4 s the service waits after starting the tool.
        server_.env()["PANELKIT_SIM_FWTOOL_SECONDS"] = "8";
        ASSERT_TRUE(server_.start()) << server_.log();
    }

    HttpReply Upload(const std::string& name, const std::string& content)
    {
        return PostForm(server_.port(), "/config/settings/firmware", {}, {{"fwupload", name, content}});
    }

    std::string ToolStatus()
    {
        const HttpReply reply = Rpc(server_.port(), "/async/rpc", "fw_upgrade_status");
        Json::Value answer;
        std::string errors;
        const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
        if (reply.status != 200 || !reader->parse(reply.body.data(), reply.body.data() + reply.body.size(), &answer, &errors))
            return "";
        return answer["result"].asString();
    }

    // Polls the status method as the progress page does until the state shows; every state seen, in order.
    std::vector<std::string> FollowUntil(const std::string& state, int timeoutMs = 30000)
    {
        std::vector<std::string> seen;
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
        while (std::chrono::steady_clock::now() < deadline) {
            const std::string line = ToolStatus();
            const auto at = line.find("'state' : '");
            if (at != std::string::npos) {
                const std::string current = line.substr(at + 11, line.find('\'', at + 11) - at - 11);
                if (seen.empty() || seen.back() != current)
                    seen.push_back(current);
                if (current == state)
                    return seen;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
        ADD_FAILURE() << "no state " << state << " within " << timeoutMs << " ms; " << server_.log();
        return seen;
    }

    std::string CommandLog() const { return ReadFile(server_.devicePath("/var/log/sim-commands.log")); }

    Server server_;
};

TEST_F(FirmwareUpgrade, AGoodImageIsFlashedAfterARestartWithFwbootAndAsksForAReboot)
{
    const HttpReply reply = Upload("ulm3-2.5.0.bin", kMagic + std::string(200000, 'i'));
    ASSERT_EQ(200, reply.status);
    EXPECT_NE(std::string::npos, reply.body.find("<div id=\"fw_progress_page\">"));
    ASSERT_TRUE(WaitForText(server_.logPath(), "panelkit ** forced reload **", 10000)) << server_.log();
    ASSERT_TRUE(server_.waitReady()) << server_.log();

    const std::vector<std::string> seen = FollowUntil("done");
    ASSERT_FALSE(seen.empty());
    EXPECT_EQ("done", seen.back());
    for (const char* state : {"flash", "finishing"})
        EXPECT_NE(seen.end(), std::find(seen.begin(), seen.end(), state)) << state << " never shown";

    const std::string log = CommandLog();
    EXPECT_NE(std::string::npos, log.find("/usr/bin/vigild --suspend socat\n")) << log;
    EXPECT_NE(std::string::npos, log.find("/usr/bin/fwtool environment FWBOOT=1\n")) << log;
    const auto upgrade = log.find("/usr/bin/fwtool --upgrade " + server_.devicePath("/tmp/firmware"));
    ASSERT_NE(std::string::npos, upgrade) << log;
    EXPECT_NE(std::string::npos, log.find(" --delete --create-ubi-volume --unmount-ubi-volume\n", upgrade)) << log;

    const HttpReply page = Get(server_.port(), "/config/settings/firmware");
    EXPECT_NE(std::string::npos, page.body.find("Settings have been changed that require a")) << "the reboot is asked for";
    const HttpReply status = Get(server_.port(), "/config/settings/firmware_upgrade_status");
    EXPECT_EQ(302, status.status);
}

TEST_F(FirmwareUpgrade, AnImageTheToolRejectsEndsFailed)
{
    ASSERT_EQ(200, Upload("broken.itb", kMagic + "FAIL" + std::string(50000, 'x')).status);
    ASSERT_TRUE(WaitForText(server_.logPath(), "panelkit ** forced reload **", 10000)) << server_.log();
    ASSERT_TRUE(server_.waitReady()) << server_.log();
    const std::vector<std::string> seen = FollowUntil("failed");
    ASSERT_FALSE(seen.empty());
    EXPECT_EQ("failed", seen.back());
    EXPECT_NE(std::string::npos, Get(server_.port(), "/config/settings/firmware?type=failedUpgrade")
                                     .body.find("Firmware upgrade failed"));
}

}  // namespace

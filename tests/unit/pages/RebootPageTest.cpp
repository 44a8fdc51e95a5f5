// The Reboot page: its button, the message after an upgrade, and a post that answers with the waiting page and reboots once.
#include "PageFixture.h"
#include "Process.h"

using namespace panelkit::test;

namespace {

class RebootPage : public PageFixture {
};

const char kReboot[] = "/config/settings/reboot";

// The device's interfaces before a new LAN address has been applied: the bridge still has the old one.
const char kIfconfig[] = R"(#!/bin/sh
cat <<'OUT'
br1       Link encap:Ethernet  HWaddr 00:1E:C0:4A:11:02
          inet addr:192.168.1.1  Bcast:192.168.1.255  Mask:255.255.255.0
          UP BROADCAST RUNNING MULTICAST  MTU:1500  Metric:1

OUT
)";

std::size_t Count(const std::string& text, const std::string& part)
{
    std::size_t count = 0;
    for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size()))
        ++count;
    return count;
}

}  // namespace

TEST_F(RebootPage, AfterAnUpgradeTheSuccessMessageShowsAboveTheButton)
{
    const std::string body = Get(std::string(kReboot) + "?type=finishedUpgrade").body;
    const auto message = body.find("<div class=\"success static form_result_msg\">"
                                   "Firmware upgraded successfully, reboot to run new firmware</div>");
    const auto button = body.find("id=\"cfg_rbt_reboot\"");
    ASSERT_NE(std::string::npos, message) << body;
    ASSERT_NE(std::string::npos, button) << body;
    EXPECT_LT(message, button);
}

TEST_F(RebootPage, WithoutTheUpgradeOnlyTheButtonShows)
{
    for (const std::string& path : {std::string(kReboot), std::string(kReboot) + "?type=other"}) {
        const std::string body = Get(path).body;
        EXPECT_FALSE(Has(body, "form_result_msg")) << path << ": " << body;
        EXPECT_TRUE(Has(body, "<th><label for=\"cfg_rbt_reboot\">Reboot</label></th>")) << body;
        EXPECT_TRUE(Has(body, "<input type=\"submit\" id=\"cfg_rbt_reboot\" name=\"reboot\" value=\"Reboot\"")) << body;
        EXPECT_EQ(1u, Count(body, "<input type=\"submit\"")) << body;
        EXPECT_EQ(0u, Count(body, "<input type=\"text\"")) << body;
    }
    EXPECT_FALSE(Has(CommandLog(), "/sbin/reboot"));
}

TEST_F(RebootPage, APostAnswersWithTheWaitingPageOnceAndRebootsOnce)
{
    WriteDeviceFile("/sbin/ifconfig", kIfconfig, true);
    StoreSet("net/lan_ipaddr", "10.1.2.3");
    const auto reply = Post(kReboot, {{"reboot", "Reboot"}});
    EXPECT_EQ(200, reply.status);
    EXPECT_EQ(1u, Count(reply.body, "<!DOCTYPE")) << reply.body;
    EXPECT_EQ(1u, Count(reply.body, "id=\"config_page_title\"")) << reply.body;
    EXPECT_EQ(1u, Count(reply.body, "/js/waitreboot.js?rev=")) << reply.body;
    EXPECT_TRUE(Has(reply.body, "\"rebootWaitSec\":100"));
    EXPECT_TRUE(Has(reply.body, "<div class=\"info static form_result_msg\">Please wait..rebooting</div>")) << reply.body;
    EXPECT_TRUE(Has(reply.body, "<div id=\"lan_ipaddr\" class=\"hidden\">192.168.1.1</div>")) << reply.body;
    EXPECT_TRUE(Has(reply.body, "<div id=\"pardb_lan_ipaddr\" class=\"hidden\">10.1.2.3</div>")) << reply.body;

    // The device's reboot (its stand-in) starts its restart after the five seconds; every reboot the post
    // started has logged itself long before.
    ASSERT_TRUE(WaitForText(DevicePath("/var/log/sim-reboot.log"), "rebooting", 20000)) << CommandLog();
    EXPECT_EQ(1u, Count(CommandLog(), "/sbin/reboot -d 5\n")) << CommandLog();
    EXPECT_EQ(1u, Count(ReadFile(DevicePath("/var/log/sim-reboot.log")), "rebooting"));
}

TEST_F(RebootPage, APostWithoutTheButtonOnlyShowsThePage)
{
    const auto reply = Post(kReboot, {{"other", "x"}});
    EXPECT_EQ(200, reply.status);
    EXPECT_FALSE(Has(reply.body, "waitreboot.js")) << reply.body;
    EXPECT_TRUE(Has(reply.body, "id=\"cfg_rbt_reboot\"")) << reply.body;
    EXPECT_FALSE(Has(CommandLog(), "/sbin/reboot"));
}

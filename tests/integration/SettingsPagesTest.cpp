// The Settings pages' edge cases on the real binary and a simulated device: firmware checks, reboot,
// administration and licence notices as a browser meets them.
#include "DeviceServerTest.h"
#include "Http.h"
#include "Server.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstdio>
#include <dirent.h>
#include <thread>
#include <unistd.h>

using namespace panelkit::test;

namespace {

const std::string kMagic("\xD0\x0D\xFE\xED", 4);
const char kFirmware[] = "/config/settings/firmware";
const char kAdvanced[] = "/config/settings/advanced";
const char kInvalid[] = "Invalid values: The form values were not saved.";

bool Has(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

class SettingsPages : public DeviceServerTest {
protected:
    HttpReply Upload(const std::string& name, std::string content)
    {
        return PostForm(server_.port(), kFirmware, {}, {{"fwupload", name, std::move(content)}});
    }

    // The firmware images stored in the device's /tmp.
    int Images() const
    {
        int count = 0;
        DIR* dir = ::opendir(server_.devicePath("/tmp").c_str());
        while (const dirent* entry = dir ? ::readdir(dir) : nullptr)
            count += std::string(entry->d_name).rfind("firmware", 0) == 0;
        if (dir)
            ::closedir(dir);
        return count;
    }

    void ExpectRefused(const HttpReply& reply)
    {
        EXPECT_EQ(200, reply.status);
        EXPECT_TRUE(Has(reply.body, kInvalid)) << reply.body.substr(0, 2000);
        EXPECT_FALSE(Has(reply.body, "fw_progress_page"));
        EXPECT_EQ(0, Images());
        EXPECT_FALSE(server_.work().exists("device/tmp/panelkit_fwsugd_flag"));
        EXPECT_FALSE(Has(CommandLog(), "vigild --suspend socat"));
    }
};

TEST_F(SettingsPages, FirmwareRefusesAnEmptyFileAnImgAndOneByteTooMany)
{
    ExpectRefused(Upload("empty.bin", ""));
    ExpectRefused(Upload("image.img", kMagic + "payload"));
    std::string huge(314572801, 'f');
    huge.replace(0, 4, kMagic);
    ExpectRefused(Upload("huge.bin", std::move(huge)));
    EXPECT_EQ(200, Get(server_.port(), kFirmware).status) << "the service goes on";
}

TEST_F(SettingsPages, FirmwareAcceptsAnItbThatBeginsWithTheMagic)
{
    const HttpReply reply = Upload("ulm3.itb", kMagic + std::string(4096, 'i'));
    EXPECT_EQ(200, reply.status);
    EXPECT_TRUE(Has(reply.body, "<div id=\"fw_progress_page\">"));
    EXPECT_TRUE(Has(CommandLog(), "/usr/bin/vigild --suspend socat\n"));
    ASSERT_TRUE(WaitForText(server_.logPath(), "panelkit ** forced reload **", 10000)) << server_.log();
}

TEST_F(SettingsPages, UpgradeStatusWithoutAnUpgradeRedirectsToTheFirmwarePage)
{
    const HttpReply reply = Get(server_.port(), "/config/settings/firmware_upgrade_status");
    EXPECT_EQ(302, reply.status);
    EXPECT_EQ("/config/settings/firmware", reply.header("Location"));
}

TEST_F(SettingsPages, RebootPageShowsTheUpgradeMessageOnlyAfterAnUpgrade)
{
    const std::string message = "Firmware upgraded successfully, reboot to run new firmware";
    const HttpReply after = Get(server_.port(), "/config/settings/reboot?type=finishedUpgrade");
    ASSERT_TRUE(Has(after.body, message));
    EXPECT_LT(after.body.find(message), after.body.find("id=\"cfg_rbt_reboot\""));
    const HttpReply plain = Get(server_.port(), "/config/settings/reboot");
    EXPECT_FALSE(Has(plain.body, message));
    EXPECT_TRUE(Has(plain.body, "id=\"cfg_rbt_reboot\""));
}

TEST_F(SettingsPages, RebootAnswersWithTheWaitingPageOnceAndRebootsOnce)
{
    const int first = server_.process().pid();
    const HttpReply reply = PostForm(server_.port(), "/config/settings/reboot", {{"reboot", "Reboot"}});
    EXPECT_EQ(200, reply.status);
    std::size_t pages = 0;
    for (auto at = reply.body.find("<div id=\"wait_reboot\">"); at != std::string::npos;
         at = reply.body.find("<div id=\"wait_reboot\">", at + 1))
        ++pages;
    EXPECT_EQ(1u, pages);
    EXPECT_TRUE(Has(reply.body, "Please wait..rebooting"));

    const std::string rebootLog = server_.devicePath("/var/log/sim-reboot.log");
    ASSERT_TRUE(WaitForText(rebootLog, "restarted", 30000)) << ReadFile(rebootLog);
    int reboots = 0;
    const std::string log = CommandLog();
    for (auto at = log.find("/sbin/reboot -d 5\n"); at != std::string::npos; at = log.find("/sbin/reboot -d 5\n", at + 1))
        ++reboots;
    EXPECT_EQ(1, reboots) << log;

    // The service the reboot started again is no child of this test: stop it by its pid.
    const std::string pidFile = server_.devicePath("/var/run/panelkit.pid");
    int restarted = first;
    for (int waited = 0; waited < 20000 && restarted == first; waited += 20) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        restarted = std::atoi(ReadFile(pidFile).c_str());
        restarted = restarted > 0 ? restarted : first;
    }
    ASSERT_NE(first, restarted);
    ASSERT_TRUE(WaitForPort(server_.port(), 20000)) << ReadFile(server_.devicePath("/var/log/panelkit.log"));
    EXPECT_EQ(200, Get(server_.port(), "/config/").status) << "the device is back on its port";
    ::kill(restarted, SIGTERM);
    for (int waited = 0; waited < 20000 && ::kill(restarted, 0) == 0; waited += 20)
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
}

TEST_F(SettingsPages, AdministrationSavedWithoutAChangeWritesNothingAndRunsNothing)
{
    for (const char* key : {"system/remote/ssh_enabled", "system/remote/web_enabled", "system/remote/icmp_enabled",
                            "syslogd/persistent"})
        ASSERT_TRUE(server_.storeSet(key, "no"));
    ASSERT_TRUE(server_.storeSet("debug/seriald", "0", "--int"));
    for (const char* key : {"system/remote/ssh_enabled", "system/remote/web_enabled", "system/remote/icmp_enabled",
                            "syslogd/persistent", "debug/seriald"})
        ASSERT_TRUE(server_.storeRefuse(key));
    const std::string before = CommandLog();
    const HttpReply reply = PostForm(server_.port(), kAdvanced, {{"submit", "Save"}});
    EXPECT_TRUE(Has(reply.body, "Success: The form values were saved.")) << reply.body.substr(0, 2000);
    EXPECT_EQ(before, CommandLog());
    EXPECT_FALSE(server_.rebootMarked());
}

TEST_F(SettingsPages, ARootPasswordOfOneToFourCharactersIsRefused)
{
    for (const std::string password : {"a", "ab", "abc", "abcd"}) {
        const HttpReply reply = PostForm(server_.port(), kAdvanced,
                                         {{"root_password", password},
                                          {"root_passwordConfirm", password},
                                          {"submit", "Save Root Password"}});
        EXPECT_TRUE(Has(reply.body, "Invalid length; minimum 5")) << password;
    }
    EXPECT_EQ("<missing>", server_.storeGet("system/digest/root"));
    EXPECT_FALSE(Has(CommandLog(), "chpasswd"));
}

TEST_F(SettingsPages, DeployerLogToolErrorIsShownAsThePagesError)
{
    server_.writeDeviceFile("/usr/bin/logdeployer", "#!/bin/sh\necho 'logdeployer: no deployer is running'\n", true);
    const HttpReply reply = PostForm(server_.port(), kAdvanced, {{"submit", "Download log"}}, {}, true);
    EXPECT_EQ("", reply.header("Content-disposition"));
    EXPECT_TRUE(Has(reply.body, "<div class=\"failure form_result_msg\">logdeployer: no deployer is running</div>"))
        << reply.body.substr(0, 2000);
}

TEST_F(SettingsPages, AboutListsNoHiddenOnlyPackageAndOpensAFileInOtherCase)
{
    const HttpReply list = Get(server_.port(), "/config/settings/about");
    EXPECT_TRUE(Has(list.body, "id=\"panelkit-demo\""));
    EXPECT_FALSE(Has(list.body, "hidden-only-1.0"));
    const HttpReply copying = Get(server_.port(), "/config/settings/about/panelkit-demo/copying");
    EXPECT_EQ(200, copying.status);
    EXPECT_TRUE(Has(copying.body, "<pre>panelkit demo licence\n")) << copying.body.substr(0, 3000);
}

TEST_F(SettingsPages, AListedLicenceThatIsGoneShowsWhereItWasLooked)
{
    // LICENSE is a link to COPYING: with COPYING gone it is still listed, but cannot be opened.
    ASSERT_EQ(0, std::remove(server_.devicePath("/usr/share/common-licenses/sitelink-0.9/COPYING").c_str()));
    const HttpReply reply = Get(server_.port(), "/config/settings/about/sitelink-0.9/LICENSE");
    EXPECT_TRUE(Has(reply.body, "Failed to access &quot;/usr/share/common-licenses/sitelink-0.9/LICENSE&quot;"))
        << reply.body.substr(0, 3000);
}

}  // namespace

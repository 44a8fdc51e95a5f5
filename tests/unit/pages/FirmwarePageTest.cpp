// The Firmware page: versions, the image checks, the hand-over to the upgrade, and the progress page.
#include "Digests.h"
#include "LockHolder.h"
#include "PageFixture.h"
#include "util/FlagFiles.h"

#include <cstdlib>
#include <dirent.h>
#include <fstream>
#include <sstream>
#include <unistd.h>

using namespace panelkit;
using namespace panelkit::test;
using ::testing::HasSubstr;
using ::testing::Not;

namespace {

const std::string kMagic("\xD0\x0D\xFE\xED", 4);

constexpr std::uint64_t kLargest = 314572800;

class FirmwarePage : public PageFixture {
protected:
    void TearDown() override
    {
        ::unsetenv("FWBOOT");
        util::FirmwareUpgradeFile().clear();
    }

    PageReply Send(const std::string& name, const std::string& head, std::uint64_t size,
                   const std::string& mime = "application/octet-stream")
    {
        return PostMultipart("/config/settings/firmware", {}, {{"fwupload", name, mime, head, size}});
    }

    // The images stored in the device's /tmp ("firmware" and a number).
    std::vector<std::string> Images() const
    {
        std::vector<std::string> names;
        DIR* dir = ::opendir(DevicePath("/tmp").c_str());
        while (const dirent* entry = dir ? ::readdir(dir) : nullptr)
            if (std::string(entry->d_name).rfind("firmware", 0) == 0)
                names.push_back(entry->d_name);
        if (dir)
            ::closedir(dir);
        return names;
    }

    // Nothing of an upgrade was started: no image, no flag, no command.
    void ExpectNothingStarted(const PageReply& reply)
    {
        EXPECT_THAT(reply.body, Not(HasSubstr("fw_progress_page")));
        EXPECT_TRUE(Images().empty());
        EXPECT_FALSE(util::IsFirmwareUpgradeFlagged());
        EXPECT_FALSE(util::IsForceReloadFlagged());
        EXPECT_THAT(CommandLog(), Not(HasSubstr("vigild --suspend socat")));
    }
};

TEST_F(FirmwarePage, ShowsTheVersionsTheToolAndTheUploadForm)
{
    const PageReply reply = Get("/config/settings/firmware");
    ASSERT_EQ(200, reply.status);
    EXPECT_THAT(reply.body, HasSubstr("<h2 id=\"config_page_title\">Firmware</h2>"));
    EXPECT_THAT(reply.body, HasSubstr("<a href=\"#config_tab\">Load</a>"));
    EXPECT_THAT(reply.body, HasSubstr("<a href=\"#status_tab\">Status</a>"));
    EXPECT_THAT(reply.body, HasSubstr("action=\"/config/settings/firmware\" enctype=\"multipart/form-data\""));
    EXPECT_THAT(reply.body, HasSubstr("<th>Firmware Version(s)</th><td><pre>rootfs_a: 2.4.1\nrootfs_b: 2.4.0"));
    EXPECT_THAT(reply.body, HasSubstr("type=\"file\""));
    EXPECT_THAT(reply.body, HasSubstr("name=\"fwupload\""));
    EXPECT_THAT(reply.body, HasSubstr("id=\"cfg_frw_file\""));
    EXPECT_THAT(reply.body, HasSubstr("accept=\".bin,.itb\""));
    EXPECT_THAT(reply.body, HasSubstr("id=\"cfg_frw_save\""));
    EXPECT_THAT(reply.body, HasSubstr("value=\"Load Firmware\""));
    EXPECT_EQ("{ &#39;state&#39; : &#39;idle&#39; }\n", SectionText(reply.body, "FW Tool"));
    EXPECT_EQ("0.52", SectionText(reply.body, "Base"));
    EXPECT_THAT(reply.body, HasSubstr("<div id=\"conf_hw_platform\" class=\"hidden\" data-name=\"platform\">kd4</div>"));
    EXPECT_THAT(reply.body, HasSubstr("<div class=\"progress_block hidden\">"));
    EXPECT_THAT(CommandLog(), HasSubstr("/usr/bin/ubi_get_volume_versions.sh\n/usr/bin/fwtool -s\n"));
}

TEST_F(FirmwarePage, SilentVolumeScriptGivesNotAvailableAndAnError)
{
    WriteDeviceFile("/usr/bin/ubi_get_volume_versions.sh", "#!/bin/sh\nexit 0\n", true);
    const PageReply reply = Get("/config/settings/firmware");
    EXPECT_THAT(reply.body, HasSubstr("<th>Firmware Version(s)</th><td><pre>n/a</pre>"));
    EXPECT_THAT(reply.body, HasSubstr("Unknown firmware version(s)"));
}

TEST_F(FirmwarePage, AFailedUpgradeIsToldOnReturn)
{
    EXPECT_THAT(Get("/config/settings/firmware?type=failedUpgrade").body, HasSubstr("Firmware upgrade failed"));
    EXPECT_THAT(Get("/config/settings/firmware").body, Not(HasSubstr("Firmware upgrade failed")));
}

TEST_F(FirmwarePage, AnEmptyFileIsRefused)
{
    const PageReply reply = Send("empty.bin", "", 0);
    EXPECT_THAT(reply.body, HasSubstr("Invalid values: The form values were not saved."));
    ExpectNothingStarted(reply);
}

TEST_F(FirmwarePage, AFileOneByteOverThreeHundredMebibytesIsRefused)
{
    const PageReply reply = Send("huge.bin", kMagic, kLargest + 1);
    EXPECT_THAT(reply.body, HasSubstr("Invalid values: The form values were not saved."));
    ExpectNothingStarted(reply);
    EXPECT_EQ(0, ::access(DevicePath("/tmp").c_str(), F_OK));
}

TEST_F(FirmwarePage, AnImageNamedImgIsRefusedByItsName)
{
    const PageReply reply = Send("image.img", kMagic + "payload", 4096);
    EXPECT_THAT(reply.body, HasSubstr("Not a firmware image: choose a .bin or .itb image"));
    ExpectNothingStarted(reply);
}

TEST_F(FirmwarePage, AnImageWithoutTheMagicIsRefused)
{
    const PageReply reply = Send("image.bin", "NOTFIT", 4096);
    EXPECT_THAT(reply.body, HasSubstr("Invalid values: The form values were not saved."));
    ExpectNothingStarted(reply);
}

TEST_F(FirmwarePage, NoFileAtAllIsRefused)
{
    const PageReply reply = PostMultipart("/config/settings/firmware", {}, {{"fwupload", "", "application/octet-stream", "", 0}});
    EXPECT_THAT(reply.body, HasSubstr("Not a firmware image: choose a .bin or .itb image for this device, at most 300 MiB"));
    ExpectNothingStarted(reply);
}

TEST_F(FirmwarePage, AnotherMimeTypeIsLoggedAndNotSaved)
{
    testing::internal::CaptureStderr();
    const PageReply reply = Send("image.bin", kMagic, 4096, "text/plain");
    const std::string log = testing::internal::GetCapturedStderr();
    EXPECT_THAT(log, HasSubstr("Unrecognized firmware MIME type text/plain"));
    EXPECT_THAT(reply.body, HasSubstr("Save error: The form values were not saved."));
    ExpectNothingStarted(reply);
}

TEST_F(FirmwarePage, AnItbImageStartsTheUpgrade)
{
    WriteDeviceFile("/tmp/fwtool_status.txt", "{ 'state' : 'done', 'received' : 1, 'size' : 1 }\n");
    const PageReply reply = Send("ulm3-2.5.0.itb", kMagic + "FIT image", 65536 * 3 + 7);
    ASSERT_EQ(200, reply.status);
    EXPECT_THAT(reply.body, HasSubstr("<div id=\"fw_progress_page\">"));
    EXPECT_THAT(reply.body, HasSubstr("\"progress\":true"));
    EXPECT_THAT(reply.body, HasSubstr("Keep the device powered until the upgrade has finished"));

    const std::vector<std::string> images = Images();
    ASSERT_EQ(1u, images.size());
    EXPECT_THAT(images[0], ::testing::MatchesRegex("firmware[0-9]+"));
    const std::string image = DevicePath("/tmp/" + images[0]);
    EXPECT_EQ(image, util::FirmwareUpgradeFile());
    std::ifstream in(image, std::ios::binary);
    std::ostringstream bytes;
    bytes << in.rdbuf();
    EXPECT_EQ(65536u * 3 + 7, bytes.str().size());
    EXPECT_EQ(kMagic + "FIT image", bytes.str().substr(0, 13));
    EXPECT_THAT(reply.body, HasSubstr("<code id=\"fw_sha256\">" + Sha256Hex(bytes.str()) + "</code>"));

    EXPECT_TRUE(util::IsFirmwareUpgradeFlagged());
    EXPECT_TRUE(util::IsForceReloadFlagged());
    EXPECT_THAT(CommandLog(), HasSubstr("/usr/bin/vigild --suspend socat\n"));
    EXPECT_NE(0, ::access(DevicePath("/tmp/fwtool_status.txt").c_str(), F_OK)) << "the old status is removed";
    ASSERT_NE(nullptr, std::getenv("FWBOOT")) << "the internal server restarts with FWBOOT set";
    EXPECT_STREQ("1", std::getenv("FWBOOT"));
}

TEST_F(FirmwarePage, TheImageNameNeverFollowsALinkOrReplacesAFile)
{
    // The numbers the page will draw, in order.
    std::srand(4711);
    const int first = std::rand() % 10000;
    const int second = std::rand() % 10000;
    std::srand(4711);
    WriteDeviceFile("/victim", "keep me");
    ASSERT_EQ(0, ::symlink(DevicePath("/victim").c_str(), DevicePath("/tmp/firmware" + std::to_string(first)).c_str()));
    Send("image.bin", kMagic, 4096);
    EXPECT_EQ(DevicePath("/tmp/firmware" + std::to_string(second)), util::FirmwareUpgradeFile());
    std::ifstream victim(DevicePath("/victim"));
    std::string kept;
    std::getline(victim, kept);
    EXPECT_EQ("keep me", kept);
}

TEST_F(FirmwarePage, StatusPageWithoutAnUpgradeRedirectsToTheFirmwarePage)
{
    const PageReply reply = Get("/config/settings/firmware_upgrade_status");
    EXPECT_EQ(302, reply.status);
    EXPECT_EQ("/config/settings/firmware", reply.header("Location"));
}

TEST_F(FirmwarePage, WhileTheToolRunsBothPagesShowTheProgressAndTakeNoUpload)
{
    const LockHolder tool(DevicePath("/tmp/fwtool_6v1Znb.lock"));
    ASSERT_TRUE(tool.locked());
    for (const char* path : {"/config/settings/firmware", "/config/settings/firmware_upgrade_status"}) {
        const PageReply reply = Get(path);
        EXPECT_EQ(200, reply.status) << path;
        EXPECT_THAT(reply.body, HasSubstr("<div id=\"fw_progress_page\">")) << path;
        EXPECT_THAT(reply.body, HasSubstr("/js/firmware.js")) << path;
    }
    const PageReply posted = Send("image.bin", kMagic, 4096);
    EXPECT_THAT(posted.body, HasSubstr("<div id=\"fw_progress_page\">"));
    EXPECT_TRUE(Images().empty());
    EXPECT_FALSE(util::IsFirmwareUpgradeFlagged());
}

}  // namespace

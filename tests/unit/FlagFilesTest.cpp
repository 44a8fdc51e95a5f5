// Flag files shared with the main loop, the upgrade lock, directory listings and environment look-ups.
#include "TempDir.h"
#include "util/DevicePath.h"
#include "util/Commands.h"
#include "util/DeviceIdentity.h"
#include "util/Environment.h"
#include "util/Files.h"
#include "util/FlagFiles.h"
#include "web/Settings.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

using panelkit::test::TempDir;
namespace util = panelkit::util;

namespace {

class DeviceRoot : public ::testing::Test {
protected:
    void SetUp() override
    {
        root_.write("tmp/.keep", "");
        util::SetDeviceRoot(root_.path());
    }
    TempDir root_;
};

}  // namespace

TEST_F(DeviceRoot, RebootFlagIsAFileUnderTheDeviceTmp)
{
    EXPECT_FALSE(util::IsRebootRequired());
    util::MarkRebootRequired();
    EXPECT_TRUE(root_.exists("tmp/panelkit_reboot_flag"));
    EXPECT_TRUE(util::IsRebootRequired());
}

TEST_F(DeviceRoot, FinishedFirmwareToolMeansRebootRequired)
{
    root_.write("tmp/fwtool_status.txt", "{ 'state' : 'done', 'received' : 10, 'size' : 10 }\nmore\n");
    EXPECT_TRUE(util::IsRebootRequired());
    root_.write("tmp/fwtool_status.txt", "state done\n");
    EXPECT_FALSE(util::IsRebootRequired());
    root_.write("tmp/fwtool_status.txt", "");
    EXPECT_FALSE(util::IsRebootRequired());
    root_.write("tmp/fwtool_status.txt", "writing\n'done'\n");
    EXPECT_FALSE(util::IsRebootRequired()) << "only the first line counts";
}

TEST_F(DeviceRoot, ForceReloadFlagComesAndGoes)
{
    util::MarkForceReload(true);
    EXPECT_TRUE(util::IsForceReloadFlagged());
    EXPECT_TRUE(root_.exists("tmp/panelkit_freload_flag"));
    util::MarkForceReload(false);
    EXPECT_FALSE(util::IsForceReloadFlagged());
    util::MarkForceReload(false);  // rm complains on stderr; nothing else happens
    EXPECT_FALSE(util::IsForceReloadFlagged());
}

TEST_F(DeviceRoot, FirmwareUpgradeFlagComesAndGoes)
{
    util::MarkFirmwareUpgrade(true);
    EXPECT_TRUE(util::IsFirmwareUpgradeFlagged());
    util::MarkFirmwareUpgrade(false);
    EXPECT_FALSE(util::IsFirmwareUpgradeFlagged());
    util::MarkFirmwareUpgrade(false);
    EXPECT_FALSE(root_.exists("tmp/panelkit_fwsugd_flag"));
}

TEST(UpgradeState, FileAndPidAreProcessWide)
{
    EXPECT_EQ(-1, util::FirmwareUpgradePid());
    util::FirmwareUpgradePid() = 1234;
    util::FirmwareUpgradeFile() = "/tmp/image.bin";
    EXPECT_EQ(1234, util::FirmwareUpgradePid());
    EXPECT_EQ("/tmp/image.bin", util::FirmwareUpgradeFile());
}

TEST_F(DeviceRoot, UpgradeInProgressFollowsTheToolsLock)
{
    EXPECT_FALSE(util::IsFirmareUpgradeInProgress()) << "no lock file";
    root_.write("tmp/fwtool_6v1Znb.lock", "");
    EXPECT_FALSE(util::IsFirmareUpgradeInProgress()) << "nobody holds the lock";

    int ready[2];
    ASSERT_EQ(0, ::pipe(ready));
    const pid_t holder = ::fork();
    if (holder == 0) {
        const int fd = ::open((root_ / "tmp/fwtool_6v1Znb.lock").c_str(), O_RDWR);
        struct flock lock {};
        lock.l_type = F_WRLCK;
        lock.l_whence = SEEK_SET;
        if (fd < 0 || ::fcntl(fd, F_SETLK, &lock) != 0)
            ::_exit(1);
        const char byte = 1;
        if (::write(ready[1], &byte, 1) != 1)
            ::_exit(1);
        ::pause();
        ::_exit(0);
    }
    char byte = 0;
    ASSERT_EQ(1, ::read(ready[0], &byte, 1));
    EXPECT_TRUE(util::IsFirmareUpgradeInProgress()) << "another process holds the lock";
    ::kill(holder, SIGKILL);
    ::waitpid(holder, nullptr, 0);
    ::close(ready[0]);
    ::close(ready[1]);
    EXPECT_FALSE(util::IsFirmareUpgradeInProgress());
}

TEST_F(DeviceRoot, UnopenableLockFileMeansInProgress)
{
    root_.write("tmp/fwtool_6v1Znb.lock/inside", "");
    EXPECT_TRUE(util::IsFirmareUpgradeInProgress());
}

TEST(FindFiles, DirectoriesNeverIncludeDotEntries)
{
    TempDir dir;
    dir.write("a/x", "");
    dir.write("b/x", "");
    dir.write("plain.txt", "");
    auto names = util::FindFiles(dir.path(), util::FindFilesType::Directory, ".*");
    std::sort(names.begin(), names.end());
    EXPECT_EQ((std::vector<std::string>{"a", "b"}), names);
    auto regular = util::FindFiles(dir.path(), util::FindFilesType::Regular, ".*");
    EXPECT_EQ(std::vector<std::string>{"plain.txt"}, regular);
    auto any = util::FindFiles(dir.path(), util::FindFilesType::Any, ".*");
    EXPECT_EQ(5u, any.size()) << "every entry, . and .. included";
}

TEST(FindFiles, PatternsSearchAndBadPatternsGiveNothing)
{
    TempDir dir;
    dir.write("one-panelkit-plugin.so", "");
    dir.write("two-panelkit-plugin.so.bak", "");
    EXPECT_EQ(std::vector<std::string>{"one-panelkit-plugin.so"},
              util::FindFiles(dir.path(), util::FindFilesType::Regular, ".*-panelkit-plugin.so$"));
    EXPECT_EQ(2u, util::FindFiles(dir.path(), util::FindFilesType::Regular, "plugin").size());
    testing::internal::CaptureStderr();
    EXPECT_TRUE(util::FindFiles(dir.path(), util::FindFilesType::Any, "[").empty());
    EXPECT_NE(std::string::npos, testing::internal::GetCapturedStderr().find("FindFiles: Bad regex pattern: ["));
    EXPECT_TRUE(util::FindFiles(dir / "missing", util::FindFilesType::Any, ".*").empty());
}

TEST(Environment, EnvironmentWinsWhenSetAndNotEmpty)
{
    Json::Value config;
    config["panelkit"]["media_root"] = "/media";
    config["panelkit"]["number"] = 5;
    const panelkit::web::Settings settings(config);
    ::unsetenv("PANELKIT_TEST_MEDIA");
    EXPECT_EQ("", util::GetEnv("PANELKIT_TEST_MEDIA"));
    EXPECT_EQ("/media", util::EnvOrSettings("PANELKIT_TEST_MEDIA", "panelkit.media_root", settings));
    ::setenv("PANELKIT_TEST_MEDIA", "", 1);
    EXPECT_EQ("/media", util::EnvOrSettings("PANELKIT_TEST_MEDIA", "panelkit.media_root", settings));
    ::setenv("PANELKIT_TEST_MEDIA", "/other", 1);
    EXPECT_EQ("/other", util::GetEnv("PANELKIT_TEST_MEDIA"));
    EXPECT_EQ("/other", util::EnvOrSettings("PANELKIT_TEST_MEDIA", "panelkit.media_root", settings));
    ::unsetenv("PANELKIT_TEST_MEDIA");
    EXPECT_EQ("", util::EnvOrSettings("PANELKIT_TEST_MEDIA", "panelkit.number", settings));
    EXPECT_EQ("", util::EnvOrSettings("PANELKIT_TEST_MEDIA", "panelkit.none", settings));
}

TEST(DevicePaths, RootIsPutBeforeDevicePathsAndMadeAbsolute)
{
    util::SetDeviceRoot("relative/root/");
    char cwd[4096];
    ASSERT_NE(nullptr, ::getcwd(cwd, sizeof cwd));
    EXPECT_EQ(std::string(cwd) + "/relative/root/tmp/x", util::DevicePath("/tmp/x"));
    EXPECT_EQ(std::string(cwd) + "/relative/root", util::GetEnv("PANELKIT_DEVICE_ROOT"));
    EXPECT_EQ(0u, util::GetEnv("PATH").rfind(std::string(cwd) + "/relative/root/usr/sbin:", 0));
    util::SetDeviceRoot("");
    EXPECT_EQ("/tmp/x", util::DevicePath("/tmp/x"));
    EXPECT_EQ(std::string::npos, util::GetEnv("PATH").find("relative/root"));
}

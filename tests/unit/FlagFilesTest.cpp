// Flag files shared with the main loop, the upgrade state, and the firmware tool's lock and status files.
#include "LockHolder.h"
#include "TempDir.h"
#include "util/DevicePath.h"
#include "util/FlagFiles.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <unistd.h>

using panelkit::test::LockHolder;
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

// Sets PATH for the scope of a test and puts the old value back however the test ends.
class PathSetTo {
public:
    explicit PathSetTo(const char* path) : saved_(std::getenv("PATH") ? std::getenv("PATH") : "")
    {
        ::setenv("PATH", path, 1);
    }
    ~PathSetTo() { ::setenv("PATH", saved_.c_str(), 1); }
    PathSetTo(const PathSetTo&) = delete;
    PathSetTo& operator=(const PathSetTo&) = delete;

private:
    std::string saved_;
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
}

TEST_F(DeviceRoot, ClearingAnAbsentReloadFlagWarnsAsRmWouldAndChangesNothing)
{
    testing::internal::CaptureStderr();
    util::MarkForceReload(false);
    const std::string log = testing::internal::GetCapturedStderr();
    const std::string complaint =
        "panelkit, warning: rm: cannot remove '" + (root_ / "tmp/panelkit_freload_flag") + "': No such file or directory";
    EXPECT_NE(std::string::npos, log.find(complaint)) << "expected \"" << complaint << "\" in: " << log;
    EXPECT_FALSE(util::IsForceReloadFlagged());
}

TEST_F(DeviceRoot, FirmwareUpgradeFlagComesAndGoes)
{
    util::MarkFirmwareUpgrade(true);
    EXPECT_TRUE(util::IsFirmwareUpgradeFlagged());
    util::MarkFirmwareUpgrade(false);
    EXPECT_FALSE(util::IsFirmwareUpgradeFlagged());
}

TEST_F(DeviceRoot, ClearingAnAbsentFirmwareFlagSaysNothing)
{
    testing::internal::CaptureStderr();
    util::MarkFirmwareUpgrade(false);
    EXPECT_EQ("", testing::internal::GetCapturedStderr());
    EXPECT_FALSE(root_.exists("tmp/panelkit_fwsugd_flag"));
}

TEST_F(DeviceRoot, FlagsAreSetAndClearedWithNoProgramOnThePath)
{
    bool reboot = false, reload = false, firmware = false, cleared = false;
    {
        const PathSetTo nowhere("");
        util::MarkRebootRequired();
        util::MarkForceReload(true);
        util::MarkFirmwareUpgrade(true);
        reboot = root_.exists("tmp/panelkit_reboot_flag");
        reload = root_.exists("tmp/panelkit_freload_flag");
        firmware = root_.exists("tmp/panelkit_fwsugd_flag");
        util::MarkForceReload(false);
        util::MarkFirmwareUpgrade(false);
        cleared = !root_.exists("tmp/panelkit_freload_flag") && !root_.exists("tmp/panelkit_fwsugd_flag");
    }
    EXPECT_TRUE(reboot);
    EXPECT_TRUE(reload);
    EXPECT_TRUE(firmware);
    EXPECT_TRUE(cleared);
}

TEST_F(DeviceRoot, StatusLineIsTheFirstLineOfTheToolsStatusFile)
{
    bool opened = false;
    root_.write("tmp/fwtool_status.txt", "{ 'state' : 'done' }\nsecond line\n");
    EXPECT_EQ("{ 'state' : 'done' }", util::ReadFirmwareStatusLine(opened));
    EXPECT_TRUE(opened);
    root_.write("tmp/fwtool_status.txt", std::string(150, 'x') + "\n");
    EXPECT_EQ(std::string(99, 'x'), util::ReadFirmwareStatusLine(opened)) << "at most 99 characters";
    root_.write("tmp/fwtool_status.txt", "");
    EXPECT_EQ("", util::ReadFirmwareStatusLine(opened));
    EXPECT_TRUE(opened);
}

TEST_F(DeviceRoot, MissingStatusFileIsNotOpened)
{
    bool opened = true;
    EXPECT_EQ("", util::ReadFirmwareStatusLine(opened));
    EXPECT_FALSE(opened);
}

TEST_F(DeviceRoot, StatusLineIsReadWhileAnotherProcessKeepsTheToolsWriteLock)
{
    root_.write("tmp/fwtool_status.txt", "{ 'state' : 'writing', 'received' : 5, 'size' : 10 }\nolder\n");
    const LockHolder holder(root_ / "tmp/fwtool_status.txt");
    ASSERT_TRUE(holder.locked()) << "the other process could not lock the status file";
    bool opened = false;
    const std::string line = util::ReadFirmwareStatusLine(opened);
    const bool stillHeld = holder.holding();
    EXPECT_TRUE(opened);
    EXPECT_EQ("{ 'state' : 'writing', 'received' : 5, 'size' : 10 }", line);
    EXPECT_TRUE(stillHeld) << "the lock was let go before the line was read";
}

TEST(FlagFiles, AFlagThatCannotBeMadeIsToldAsTouchWould)
{
    TempDir root;  // no tmp folder
    util::SetDeviceRoot(root.path());
    testing::internal::CaptureStderr();
    util::MarkRebootRequired();
    const std::string log = testing::internal::GetCapturedStderr();
    const std::string complaint =
        "panelkit, warning: touch: cannot touch '" + (root / "tmp/panelkit_reboot_flag") + "': No such file or directory";
    EXPECT_NE(std::string::npos, log.find(complaint)) << "expected \"" << complaint << "\" in: " << log;
    EXPECT_FALSE(util::IsRebootRequired());
}

TEST_F(DeviceRoot, UpgradeInProgressFollowsTheToolsLock)
{
    EXPECT_FALSE(util::IsFirmareUpgradeInProgress()) << "no lock file";
    root_.write("tmp/fwtool_6v1Znb.lock", "");
    EXPECT_FALSE(util::IsFirmareUpgradeInProgress()) << "nobody holds the lock";
    {
        const LockHolder holder(root_ / "tmp/fwtool_6v1Znb.lock");
        ASSERT_TRUE(holder.locked());
        EXPECT_TRUE(util::IsFirmareUpgradeInProgress()) << "another process holds the lock";
    }
    EXPECT_FALSE(util::IsFirmareUpgradeInProgress());
}

TEST_F(DeviceRoot, UnopenableLockFileMeansInProgress)
{
    root_.write("tmp/fwtool_6v1Znb.lock/inside", "");
    EXPECT_TRUE(util::IsFirmareUpgradeInProgress());
}

TEST(UpgradeState, FileAndPidAreProcessWide)
{
    EXPECT_EQ(-1, util::FirmwareUpgradePid());
    util::FirmwareUpgradePid() = 1234;
    util::FirmwareUpgradeFile() = "/tmp/image.bin";
    EXPECT_EQ(1234, util::FirmwareUpgradePid());
    EXPECT_EQ("/tmp/image.bin", util::FirmwareUpgradeFile());
}

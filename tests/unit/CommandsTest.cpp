// Bounded command output, quoted device paths and the detached reboot.
#include "Process.h"
#include "TempDir.h"
#include "util/Commands.h"
#include "util/DevicePath.h"

#include <gtest/gtest.h>

using panelkit::test::TempDir;
namespace util = panelkit::util;

TEST(ShellCommand, OutputOverTheLimitIsCutWithAnEllipsis)
{
    const std::string out = util::ShellCommand("head -c 600 /dev/zero | tr '\\0' a", 10);
    EXPECT_EQ("aaaaaaa...", out);
}

TEST(ShellCommand, LimitBelowFourBytesCutsWithoutAnEllipsis)
{
    EXPECT_EQ("aaa", util::ShellCommand("head -c 600 /dev/zero | tr '\\0' a", 3));
}

TEST(ShellCommand, OutputOfExactlyTheLimitIsWhole)
{
    EXPECT_EQ("abcdefghij", util::ShellCommand("printf abcdefghij", 10));
    EXPECT_EQ(std::string(1024, 'b'), util::ShellCommand("head -c 1024 /dev/zero | tr '\\0' b", 1024));
}

TEST(ShellCommand, LongOutputIsCutAtTheLimit)
{
    const std::string out = util::ShellCommand("head -c 20000 /dev/zero | tr '\\0' c", 10000);
    ASSERT_EQ(10000u, out.size());
    EXPECT_EQ("...", out.substr(9997));
    EXPECT_EQ(std::string(9997, 'c'), out.substr(0, 9997));
}

TEST(ShellCommand, ThroughTheMakersLibraryGivesTheOutputAndStatus)
{
    std::string out;
    EXPECT_EQ(0, util::ShellCommand("echo hello", out));
    EXPECT_EQ("hello\n", out);
    EXPECT_EQ(3, util::ShellCommand("exit 3", out));
    EXPECT_EQ("", out);
}

TEST(ShellCommand, AQuotedPathWithBlanksAndQuotesIsOneWord)
{
    TempDir dir;
    dir.write("it's a device/etc/resolv.conf", "nameserver 10.0.0.53\n");
    const std::string path = dir.path() + "/it's a device/etc/resolv.conf";
    EXPECT_EQ("nameserver 10.0.0.53\n", panelkit::util::ShellCommand("cat " + panelkit::util::ShellQuote(path), 4096));
}

TEST(Reboot, ForkRebootRunsTheDevicesRebootWithAFiveSecondDelay)
{
    TempDir root;
    util::SetDeviceRoot(root.path());
    root.write("tmp/.keep", "");
    root.write("sbin/reboot", "#!/bin/sh\necho \"$*\" > \"$(dirname \"$0\")/../tmp/reboot-args\"\n", true);
    util::ForkReboot();
    ASSERT_TRUE(panelkit::test::WaitForText(root / "tmp/reboot-args", "\n", 5000));
    EXPECT_EQ("-d 5\n", root.read("tmp/reboot-args"));
}

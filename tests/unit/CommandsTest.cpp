// Programs run with arguments or through the shell, their bounded output and status, the detached reboot and upgrade.
#include "Process.h"
#include "TempDir.h"
#include "util/Commands.h"
#include "util/DevicePath.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

using panelkit::test::TempDir;
namespace util = panelkit::util;

namespace {

// The descriptors the next two opened would get: the lowest free ones, as a new pipe's ends get them.
std::vector<int> NextTwoDescriptors()
{
    const int first = ::open("/dev/null", O_RDONLY);
    const int second = ::open("/dev/null", O_RDONLY);
    ::close(first);
    ::close(second);
    return {first, second};
}

// True while SIGCHLD has its default disposition, so that the service can wait for its own children.
bool ChildSignalIsDefault()
{
    struct sigaction current {};
    return ::sigaction(SIGCHLD, nullptr, &current) == 0 && current.sa_handler == SIG_DFL;
}

// True when this process has no child at all, running or ended.
bool NoChildLeft()
{
    errno = 0;
    return ::waitpid(-1, nullptr, WNOHANG) == -1 && errno == ECHILD;
}

// A device root whose firmware tool records how it was started, and an applications volume
// with one application that records being stopped, in the same file.
class FirmwareUpgrade : public ::testing::Test {
protected:
    void SetUp() override
    {
        root_.write("tmp/.keep", "");
        util::SetDeviceRoot(root_.path());
        apps_.write("site/etc/init.d/rcS", "#!/bin/sh\necho \"rcS $*\" >> '" + record() + "'\n", true);
        apps_.write("bare/.keep", "");
        root_.write("usr/bin/fwtool",
                    "#!/bin/sh\n"
                    "args=$(printf ' [%s]' \"$@\")\n"
                    "read -r stat < /proc/$$/stat\n"
                    "set -- $stat\n"
                    "printf 'fwtool%s pid %s session %s in %s out %s\\n' \"$args\" $$ \"$6\" \"$(pwd)\" "
                    "\"$(readlink /proc/$$/fd/1)\" >> '" + record() + "'\n",
                    true);
    }
    std::string record() const { return root_ / "tmp/sequence"; }
    TempDir root_;
    TempDir apps_;
};

// Forks the reboot of a device whose reboot program records its arguments; true once it ran.
bool RebootOnADevice(const TempDir& root)
{
    util::SetDeviceRoot(root.path());
    root.write("tmp/.keep", "");
    root.write("sbin/reboot", "#!/bin/sh\necho \"$*\" > \"$(dirname \"$0\")/../tmp/reboot-args\"\n", true);
    util::ForkReboot();
    return panelkit::test::WaitForText(root / "tmp/reboot-args", "\n", 5000);
}

// Runs the call on a thread that blocks the stop signals, as the service's worker threads do.
template <class Call>
void OnAWorkerThread(Call call)
{
    std::thread worker([&call] {
        sigset_t stop;
        sigemptyset(&stop);
        for (int signal : {SIGQUIT, SIGTERM, SIGPIPE})
            sigaddset(&stop, signal);
        ::pthread_sigmask(SIG_BLOCK, &stop, nullptr);
        call();
    });
    worker.join();
}

const char kNoneBlocked[] = "SigBlk:\t0000000000000000\n";

}  // namespace

TEST(Run, AProgramStartedFromAWorkerThreadBlocksNoSignal)
{
    std::string mask;
    OnAWorkerThread([&mask] { mask = util::Run({"grep", "SigBlk", "/proc/self/status"}, 100); });
    EXPECT_EQ(kNoneBlocked, mask);
}

TEST(Reboot, TheRebootStartedFromAWorkerThreadBlocksNoSignal)
{
    TempDir root;
    util::SetDeviceRoot(root.path());
    root.write("tmp/.keep", "");
    root.write("sbin/reboot", "#!/bin/bash\nexec grep SigBlk /proc/self/status > \"$(dirname \"$0\")/../tmp/reboot-mask\"\n", true);
    OnAWorkerThread([] { util::ForkReboot(); });
    ASSERT_TRUE(panelkit::test::WaitForText(root / "tmp/reboot-mask", "\n", 5000));
    EXPECT_EQ(kNoneBlocked, root.read("tmp/reboot-mask"));
}

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
    ASSERT_TRUE(RebootOnADevice(root));
    EXPECT_EQ("-d 5\n", root.read("tmp/reboot-args"));
}

TEST(Reboot, TheServiceStillWaitsForItsOwnChildrenAfterwards)
{
    TempDir root;
    ASSERT_TRUE(RebootOnADevice(root));
    EXPECT_TRUE(ChildSignalIsDefault());
    EXPECT_EQ(0, util::RunStatus({"true"}));
    EXPECT_EQ(3 << 8, std::system("exit 3"));
    EXPECT_TRUE(NoChildLeft()) << "the reboot stayed a child of the service";
}

TEST_F(FirmwareUpgrade, TheApplicationsStopBeforeTheToolStartsDetachedWithItsArguments)
{
    const std::string image = root_ / "tmp/new image.bin";
    testing::internal::CaptureStderr();
    const int pid = util::ForkFirmwareUpgrade(image, apps_.path());
    const std::string log = testing::internal::GetCapturedStderr();
    ASSERT_GT(pid, 0);
    ASSERT_TRUE(panelkit::test::WaitForText(record(), "fwtool", 5000)) << root_.read("tmp/sequence");
    const std::string id = std::to_string(pid);
    EXPECT_EQ("rcS stop\n"
              "fwtool [--upgrade] [" + image + "] [--delete] [--create-ubi-volume] [--unmount-ubi-volume]"
              " pid " + id + " session " + id + " in / out /dev/null\n",
              root_.read("tmp/sequence"));
    const std::string stopped = "\"" + (apps_ / "site/etc/init.d/rcS") + " stop\" returned: 0";
    EXPECT_NE(std::string::npos, log.find(stopped)) << "expected \"" << stopped << "\" in: " << log;
}

TEST_F(FirmwareUpgrade, TheServiceStillWaitsForItsOwnChildrenAfterwards)
{
    ASSERT_GT(util::ForkFirmwareUpgrade(root_ / "tmp/image.bin", apps_.path()), 0);
    ASSERT_TRUE(panelkit::test::WaitForText(record(), "fwtool", 5000)) << root_.read("tmp/sequence");
    EXPECT_TRUE(ChildSignalIsDefault());
    EXPECT_EQ(0, util::RunStatus({"true"}));
    EXPECT_EQ(3 << 8, std::system("exit 3"));
    EXPECT_TRUE(NoChildLeft()) << "the firmware tool stayed a child of the service";
}

TEST(Bounded, TextWithinTheLimitIsWhole)
{
    EXPECT_EQ("abcdefghij", util::Bounded("abcdefghij", 10));
    EXPECT_EQ("", util::Bounded("", 0));
}

TEST(Bounded, LongerTextKeepsTheLimitEndingInAnEllipsis)
{
    EXPECT_EQ("aaaaaaa...", util::Bounded(std::string(600, 'a'), 10));
    EXPECT_EQ("a...", util::Bounded("abcde", 4));
}

TEST(Bounded, ALimitBelowFourCutsWithoutAnEllipsis)
{
    EXPECT_EQ("abc", util::Bounded("abcdef", 3));
    EXPECT_EQ("", util::Bounded("abc", 0));
}

TEST(Run, ArgumentsReachTheProgramAsTheyAre)
{
    EXPECT_EQ("a b\n$(id) 'q';\n", util::Run({"printf", "%s\\n", "a b", "$(id) 'q';"}, 4096));
}

TEST(Run, OutputIsBoundedAsShellCommandBoundsIt)
{
    TempDir dir;
    dir.write("log", std::string(20000, 'c'));
    const std::string out = util::Run({"cat", dir / "log"}, 10000);
    ASSERT_EQ(10000u, out.size());
    EXPECT_EQ(std::string(9997, 'c') + "...", out);
    EXPECT_EQ("ccc", util::Run({"cat", dir / "log"}, 3));
    EXPECT_EQ(std::string(20000, 'c'), util::Run({"cat", dir / "log"}, 20000));
}

TEST(Run, StandardErrorIsLeftToTheService)
{
    testing::internal::CaptureStderr();
    const std::string out = util::Run({"sh", "-c", "echo out; echo complaint >&2"}, 4096);
    const std::string err = testing::internal::GetCapturedStderr();
    EXPECT_EQ("out\n", out);
    EXPECT_EQ("complaint\n", err);
}

TEST(RunMerged, StandardErrorComesWithTheOutputInTheOrderWritten)
{
    testing::internal::CaptureStderr();
    const std::string out = util::RunMerged({"sh", "-c", "echo out; echo complaint >&2; echo more"}, 4096);
    EXPECT_EQ("", testing::internal::GetCapturedStderr());
    EXPECT_EQ("out\ncomplaint\nmore\n", out);
}

TEST(RunMerged, TheMergedOutputIsBoundedAndArgumentsStayAsTheyAre)
{
    EXPECT_EQ("$(id) 'q';\n", util::RunMerged({"sh", "-c", "printf '%s\\n' \"$1\" >&2", "sh", "$(id) 'q';"}, 4096));
    EXPECT_EQ("abcdefg...", util::RunMerged({"sh", "-c", "printf abcdefghijkl >&2"}, 10));
    EXPECT_EQ("", util::RunMerged({"panelkit-no-such-program"}, 4096));
    EXPECT_EQ("", util::RunMerged({}, 4096));
}

TEST(Run, AProgramThatCannotBeStartedGivesNothing)
{
    EXPECT_EQ("", util::Run({"panelkit-no-such-program", "--version"}, 4096));
    EXPECT_EQ("", util::Run({}, 4096));
}

TEST(Run, TheDevicesProgramsAreFoundFirst)
{
    TempDir root;
    root.write("usr/bin/uname", "#!/bin/sh\necho device uname\n", true);
    util::SetDeviceRoot(root.path());
    const std::string out = util::Run({"uname"}, 4096);
    util::SetDeviceRoot("");
    EXPECT_EQ("device uname\n", out);
}

TEST(Run, TheProgramHoldsNoEndOfItsPipeBesidesItsOutput)
{
    // The pipe's ends get the lowest free descriptors; the program looks whether it holds them.
    const std::vector<int> ends = NextTwoDescriptors();
    const std::string probe = "for n in 1 " + std::to_string(ends[0]) + " " + std::to_string(ends[1]) +
                              "; do [ -e /proc/$$/fd/$n ] && echo $n; done; true";
    EXPECT_EQ("1\n", util::Run({"sh", "-c", probe}, 4096)) << "descriptors " << ends[0] << " and " << ends[1];
}

TEST(Run, ManyThreadsAtOnceEachGetTheirOwnOutput)
{
    std::vector<std::string> wrong(4);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([t, &wrong] {
            const std::string mine = "thread " + std::to_string(t);
            for (int i = 0; i < 25; ++i) {
                const std::string out = util::Run({"printf", "%s", mine}, 4096);
                if (out != mine)
                    wrong[t] += "[" + out + "]";
            }
        });
    for (auto& thread : threads)
        thread.join();
    for (int t = 0; t < 4; ++t)
        EXPECT_EQ("", wrong[t]) << "thread " << t << " got other outputs";
}

TEST(RunStatus, GivesTheWaitStatusAsSystemDoes)
{
    EXPECT_EQ(0, util::RunStatus({"true"}));
    EXPECT_EQ(3 << 8, util::RunStatus({"sh", "-c", "exit 3"}));
    EXPECT_EQ(std::system("exit 3"), util::RunStatus({"sh", "-c", "exit 3"}));
}

TEST(RunStatus, AProgramThatCannotBeStartedIsNotFoundAsInTheShell)
{
    EXPECT_EQ(127 << 8, util::RunStatus({"panelkit-no-such-program"}));
    EXPECT_EQ(std::system("panelkit-no-such-program 2>/dev/null"), util::RunStatus({"panelkit-no-such-program"}));
    EXPECT_EQ(127 << 8, util::RunStatus({}));
}

TEST(RunStatus, ArgumentsReachTheProgramAsTheyAre)
{
    TempDir dir;
    EXPECT_EQ(0, util::RunStatus({"touch", dir / "a b;$(false)"}));
    EXPECT_TRUE(dir.exists("a b;$(false)"));
}

TEST(RunWithInput, TheProgramReadsTheTextAndItsStatusComesBack)
{
    TempDir dir;
    const std::string input = "root:$6$salt$hash\nsecond line with 'quotes' and $(nothing)\n";
    EXPECT_EQ(0, util::RunWithInput({"sh", "-c", "cat > \"$1\"", "sh", dir / "received"}, input));
    EXPECT_EQ(input, dir.read("received"));
    EXPECT_EQ(4 << 8, util::RunWithInput({"sh", "-c", "read line; exit 4"}, "x\n"));
}

TEST(RunWithInput, TheOutputIsDiscardedAndAProgramThatReadsNothingDoesNotHurt)
{
    // Far more than a pipe holds, to a program that never reads it.
    testing::internal::CaptureStdout();
    EXPECT_EQ(0, util::RunWithInput({"sh", "-c", "echo noise; exit 0"}, std::string(1 << 20, 'x')));
    EXPECT_EQ("", testing::internal::GetCapturedStdout());
    EXPECT_EQ(0, util::RunWithInput({"true"}, ""));
}

TEST(RunWithInput, AProgramThatCannotBeStartedIsNotFound)
{
    EXPECT_EQ(127 << 8, util::RunWithInput({"panelkit-no-such-program"}, "x"));
    EXPECT_EQ(127 << 8, util::RunWithInput({}, "x"));
}

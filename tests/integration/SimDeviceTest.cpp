// The simulated device: its root, the stand-ins' command log and output, the firmware tool and the reboot.
#include "Http.h"
#include "Process.h"
#include "Server.h"
#include "TempDir.h"
#include "util/DevicePath.h"
#include "util/Commands.h"
#include "util/FlagFiles.h"

#include <gtest/gtest.h>

#include <chrono>
#include <fcntl.h>
#include <thread>
#include <unistd.h>

using namespace panelkit::test;

namespace {

const std::string kBuild = std::string(PANELKIT_BINARY).substr(0, std::string(PANELKIT_BINARY).rfind('/'));

struct Outcome {
    int status;
    std::string out;
};

Outcome RunProgram(const std::vector<std::string>& args, const TempDir& dir, const std::map<std::string, std::string>& env = {})
{
    const std::string log = dir / "run.out";
    ::unlink(log.c_str());
    Process process(args, log, env);
    const int status = process.wait(60000);
    return {status, ReadFile(log)};
}

int CountOf(const std::string& text, const std::string& part)
{
    int count = 0;
    for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size()))
        ++count;
    return count;
}

std::string LastLine(const std::string& text)
{
    const auto end = text.find_last_not_of('\n');
    if (end == std::string::npos)
        return "";
    const auto start = text.rfind('\n', end);
    return text.substr(start == std::string::npos ? 0 : start + 1, end - (start == std::string::npos ? 0 : start + 1) + 1);
}

class SimDevice : public ::testing::Test {
protected:
    void SetUp() override
    {
        const Outcome made = RunProgram({PANELKIT_SOURCE_DIR "/sim/init-device", root()}, work_, Env());
        ASSERT_EQ(0, made.status) << made.out;
    }

    std::map<std::string, std::string> Env() const { return {{"PANELKIT_BUILD_DIR", kBuild}}; }
    std::string root() const { return work_ / "device"; }
    std::string path(const std::string& devicePath) const { return root() + devicePath; }

    TempDir work_;
};

}  // namespace

TEST_F(SimDevice, InitDeviceCreatesTheFoldersAndFiles)
{
    for (const char* folder : {"/tmp", "/etc/openvpn", "/var/log", "/var/run", "/home/root/log", "/home/root/data",
                               "/home/root/config", "/usr/share/common-licenses/panelkit-demo", "/mnt/apps"})
        EXPECT_TRUE(work_.exists("device" + std::string(folder))) << folder;
    EXPECT_EQ("45678\n", ReadFile(path("/sys/class/hwmon/hwmon0/temp1_input")));
    EXPECT_EQ(0u, ReadFile(path("/etc/version")).find("ULM3 "));
    EXPECT_NE(std::string::npos, ReadFile(path("/tmp/dhcp.leases")).find("192.168.1.10 laptop-site"));
    EXPECT_NE(std::string::npos, ReadFile(path("/var/log/messages")).find("WIFI: "));
    EXPECT_NE(std::string::npos, ReadFile(path("/usr/share/common-licenses/panelkit-demo/COPYING")).find("licence"));
}

TEST_F(SimDevice, TheStoreIsSeededLikeANewDevice)
{
    const auto get = [&](const std::string& key) { return RunProgram({kBuild + "/pardb", "--root", root(), "get", key}, work_).out; };
    EXPECT_EQ("192.168.1.1\n", get("net/lan_ipaddr"));
    EXPECT_EQ("static\n", get("net/lan_addr_mode"));
    EXPECT_EQ("255.255.255.0\n", get("net/lan_netmask"));
    EXPECT_EQ("15\n", get("net/lan_advertise_speed"));
    EXPECT_EQ("laird\n", get("net/wifi/vendor"));
    const std::string rules = RunProgram({kBuild + "/pardb", "--root", root(), "list", "net/portfwd"}, work_).out;
    EXPECT_NE(std::string::npos, rules.find("net/portfwd/tcp/00080/d_ip\n")) << rules;
}

TEST_F(SimDevice, InitDeviceRefusesANonEmptyRootWithoutForce)
{
    const Outcome again = RunProgram({PANELKIT_SOURCE_DIR "/sim/init-device", root()}, work_, Env());
    EXPECT_EQ(1, again.status);
    EXPECT_NE(std::string::npos, again.out.find("is not empty")) << again.out;
    work_.write("device/tmp/leftover", "x");
    EXPECT_EQ(0, RunProgram({PANELKIT_SOURCE_DIR "/sim/init-device", root(), "--force"}, work_, Env()).status);
    EXPECT_FALSE(work_.exists("device/tmp/leftover"));
    EXPECT_TRUE(work_.exists("device/var/lib/pardb/store.db"));
}

TEST_F(SimDevice, InitDeviceWillNotWipeAFolderThatIsNoDevice)
{
    work_.write("precious/notes.txt", "keep me");
    const Outcome outcome = RunProgram({PANELKIT_SOURCE_DIR "/sim/init-device", work_ / "precious", "--force"}, work_, Env());
    EXPECT_EQ(1, outcome.status);
    EXPECT_EQ("keep me", work_.read("precious/notes.txt"));
}

TEST_F(SimDevice, StandInsLogTheirCommandLineAndPrintDeviceOutput)
{
    const Outcome ifconfig = RunProgram({path("/sbin/ifconfig"), "br1"}, work_);
    EXPECT_EQ(0, ifconfig.status);
    EXPECT_NE(std::string::npos, ifconfig.out.find("inet addr:192.168.1.1")) << ifconfig.out;
    EXPECT_EQ("/sbin/ifconfig br1", LastLine(ReadFile(path("/var/log/sim-commands.log"))));
    EXPECT_NE(std::string::npos, RunProgram({path("/usr/sbin/ethtool"), "eth0"}, work_).out.find("Speed: 100Mb/s"));
    EXPECT_NE(std::string::npos, RunProgram({path("/usr/sbin/brctl"), "show"}, work_).out.find("br1"));
    EXPECT_NE(std::string::npos, RunProgram({path("/usr/bin/chronyc"), "-n", "sources", "-v"}, work_).out.find("^*"));
    EXPECT_EQ("/usr/bin/chronyc -n sources -v", LastLine(ReadFile(path("/var/log/sim-commands.log"))));
}

TEST_F(SimDevice, EveryDeviceProgramHasAnExecutableStandIn)
{
    for (const char* program : {"/usr/bin/fwtool", "/sbin/reboot", "/etc/nat_setup.sh", "/etc/init.d/network_funcs.sh",
                                "/etc/init.d/ntpd", "/usr/bin/vigild", "/usr/bin/lmu", "/usr/bin/chronyc", "/usr/bin/ntpq",
                                "/usr/bin/ubi_get_volume_versions.sh", "/etc/erase/erase-partition", "/usr/bin/logdeployer",
                                "/usr/sbin/lighttpd_set_passwd.sh", "/usr/sbin/chpasswd", "/sbin/ifconfig", "/usr/sbin/iw",
                                "/usr/sbin/brctl", "/usr/sbin/ethtool", "/usr/sbin/iptables", "/sbin/route",
                                "/usr/sbin/pppstats", "/bin/netstat", "/bin/uname", "/bin/ps", "/usr/bin/top",
                                "/usr/bin/uptime"})
        EXPECT_EQ(0, ::access(path(program).c_str(), X_OK)) << program;
}

TEST_F(SimDevice, PanelkitFindsTheDevicesProgramsFirst)
{
    panelkit::util::SetDeviceRoot(root());
    const std::string out = panelkit::util::ShellCommand("iptables -t nat -n -L -v", 4096);
    EXPECT_NE(std::string::npos, out.find("Chain PREROUTING")) << out;
    EXPECT_EQ("/usr/sbin/iptables -t nat -n -L -v", LastLine(ReadFile(path("/var/log/sim-commands.log"))));
}

TEST_F(SimDevice, FirmwareToolFinishesAGoodImageAndHoldsTheLockMeanwhile)
{
    std::string image = std::string("\xD0\x0D\xFE\xED", 4) + std::string(4096, 'i');
    work_.write("device/tmp/fw.bin", image);
    Process tool({path("/usr/bin/fwtool"), "--upgrade", path("/tmp/fw.bin"), "--delete", "--create-ubi-volume",
                  "--unmount-ubi-volume"},
                 work_ / "fwtool.out", {{"PANELKIT_SIM_FWTOOL_SECONDS", "2"}});
    ASSERT_TRUE(WaitForText(path("/tmp/fwtool_status.txt"), "'state' : 'upgrading'", 10000));
    panelkit::util::SetDeviceRoot(root());
    EXPECT_TRUE(panelkit::util::IsFirmareUpgradeInProgress()) << "the tool holds its lock while it runs";
    EXPECT_EQ(0, tool.wait(20000)) << ReadFile(work_ / "fwtool.out");
    EXPECT_EQ("{ 'state' : 'done', 'received' : 4100, 'size' : 4100 }\n", ReadFile(path("/tmp/fwtool_status.txt")));
    EXPECT_FALSE(work_.exists("device/tmp/fw.bin"));
    EXPECT_FALSE(panelkit::util::IsFirmareUpgradeInProgress());
    EXPECT_TRUE(panelkit::util::IsRebootRequired());
    EXPECT_EQ("{ 'state' : 'done', 'received' : 4100, 'size' : 4100 }\n",
              RunProgram({path("/usr/bin/fwtool"), "-s"}, work_).out);
}

TEST_F(SimDevice, FirmwareToolFailsAnImageWithoutTheMagic)
{
    work_.write("device/tmp/fw.bin", "not an image");
    EXPECT_EQ(1, RunProgram({path("/usr/bin/fwtool"), "--upgrade", path("/tmp/fw.bin")}, work_,
                     {{"PANELKIT_SIM_FWTOOL_SECONDS", "0"}})
                     .status);
    EXPECT_EQ("{ 'state' : 'failed', 'received' : 0, 'size' : 12 }\n", ReadFile(path("/tmp/fwtool_status.txt")));
    EXPECT_TRUE(work_.exists("device/tmp/fw.bin")) << "kept without --delete";
}

TEST_F(SimDevice, FirmwareToolRejectsAFailImageLateAndAnyImageWhenToldTo)
{
    work_.write("device/tmp/fail.bin", std::string("\xD0\x0D\xFE\xED", 4) + "FAIL" + std::string(100, 'x'));
    work_.write("device/tmp/good.bin", std::string("\xD0\x0D\xFE\xED", 4) + std::string(100, 'x'));
    const std::map<std::string, std::string> quick = {{"PANELKIT_SIM_FWTOOL_SECONDS", "0"}};
    EXPECT_EQ(1, RunProgram({path("/usr/bin/fwtool"), "--upgrade", path("/tmp/fail.bin")}, work_, quick).status);
    EXPECT_EQ("{ 'state' : 'failed', 'received' : 0, 'size' : 108 }\n", ReadFile(path("/tmp/fwtool_status.txt")));

    work_.write("device/etc/sim/fwtool-fail", "");
    EXPECT_EQ(1, RunProgram({path("/usr/bin/fwtool"), "--upgrade", path("/tmp/good.bin")}, work_, quick).status);
    EXPECT_EQ("{ 'state' : 'failed', 'received' : 0, 'size' : 104 }\n", ReadFile(path("/tmp/fwtool_status.txt")));
    ::unlink(path("/etc/sim/fwtool-fail").c_str());
    EXPECT_EQ(0, RunProgram({path("/usr/bin/fwtool"), "--upgrade", path("/tmp/good.bin")}, work_, quick).status);
    EXPECT_EQ("{ 'state' : 'done', 'received' : 104, 'size' : 104 }\n", ReadFile(path("/tmp/fwtool_status.txt")));
}

TEST_F(SimDevice, RebootEmptiesTmpButNeverKillsAProcessThatIsNotPanelkit)
{
    Process bystander({"/bin/sleep", "30"}, work_ / "sleep.out");
    work_.write("device/var/run/panelkit.pid", std::to_string(bystander.pid()) + "\n");
    work_.write("device/tmp/panelkit_reboot_flag", "");
    EXPECT_EQ(0, RunProgram({path("/sbin/reboot"), "-d", "0"}, work_).status);
    ASSERT_TRUE(WaitForText(path("/var/log/sim-reboot.log"), "is not a panelkit service", 10000))
        << ReadFile(path("/var/log/sim-reboot.log"));
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    EXPECT_TRUE(bystander.running());
    EXPECT_FALSE(work_.exists("device/tmp/panelkit_reboot_flag"));
    EXPECT_TRUE(work_.exists("device/tmp/dhcp.leases")) << "the lease file comes back as at boot";
    EXPECT_EQ("/sbin/reboot -d 0", LastLine(ReadFile(path("/var/log/sim-commands.log"))));
}

TEST_F(SimDevice, RebootRestartsTheWebServiceOfTheDevice)
{
    Server server;
    server.config()["panelkit"]["device_root"] = root();
    ASSERT_TRUE(server.start()) << server.log();
    const int before = server.process().pid();
    work_.write("device/tmp/panelkit_reboot_flag", "");
    EXPECT_EQ(0, RunProgram({path("/sbin/reboot"), "-d", "0"}, work_).status);
    EXPECT_EQ(0, server.process().wait(20000)) << "the service ends as at shutdown: "
                                                << ReadFile(path("/var/log/sim-reboot.log"));
    ASSERT_TRUE(WaitForText(path("/var/log/sim-reboot.log"), "restarted", 10000));
    // The restarted service tells its port in the device's log: the one it had, where a browser waits for it.
    const int port = WaitForListeningPort(path("/var/log/panelkit.log"), 20000);
    ASSERT_NE(0, port) << ReadFile(path("/var/log/panelkit.log"));
    EXPECT_EQ(server.port(), port);
    ASSERT_TRUE(WaitForPort(port, 20000));
    const HttpReply reply = Get(port, "/config/");
    EXPECT_EQ(200, reply.status);
    EXPECT_EQ(std::string::npos, reply.body.find("alertsBox")) << "the reboot flag is gone after the restart";
    const std::string pid = ReadFile(path("/var/run/panelkit.pid"));
    EXPECT_NE(std::to_string(before) + "\n", pid);
    ::kill(std::stoi(pid), SIGTERM);
}

TEST_F(SimDevice, EveryRebootBringsTheServiceBackOnItsPortNamedOnce)
{
    Server server;
    server.config()["panelkit"]["device_root"] = root();
    ASSERT_TRUE(server.start()) << server.log();
    const std::string restarted = "restarted";
    for (int reboot = 1; reboot <= 2; ++reboot) {
        const std::string before = ReadFile(path("/var/run/panelkit.pid"));
        EXPECT_EQ(0, RunProgram({path("/sbin/reboot"), "-d", "0"}, work_).status);
        // The first service is this test's child: it is reaped here, or the reboot would wait for it.
        if (reboot == 1) {
            EXPECT_EQ(0, server.process().wait(20000));
        }
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (CountOf(ReadFile(path("/var/log/sim-reboot.log")), restarted) < reboot &&
               std::chrono::steady_clock::now() < deadline)
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        ASSERT_EQ(reboot, CountOf(ReadFile(path("/var/log/sim-reboot.log")), restarted))
            << ReadFile(path("/var/log/sim-reboot.log"));
        ASSERT_TRUE(WaitForPort(server.port(), 20000)) << ReadFile(path("/var/log/panelkit.log"));
        ASSERT_NE(before, ReadFile(path("/var/run/panelkit.pid")));
    }
    const std::string pid = ReadFile(path("/var/run/panelkit.pid"));
    const std::string command = ReadFile("/proc/" + pid.substr(0, pid.find('\n')) + "/cmdline");
    EXPECT_EQ(1, CountOf(command, "--service.port=" + std::to_string(server.port()) + std::string(1, '\0')))
        << command;
    EXPECT_EQ(200, Get(server.port(), "/config/").status);
    ::kill(std::stoi(pid), SIGTERM);
}

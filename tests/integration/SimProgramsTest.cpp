// The simulated device's system programs (uname, ps, top, uptime): the General page shows the router, never the host.
#include "Http.h"
#include "Process.h"
#include "DeviceServerTest.h"
#include "Server.h"

#include <gtest/gtest.h>
#include <json/json.h>

#include <cerrno>
#include <cstdlib>
#include <memory>
#include <regex>
#include <unistd.h>

using namespace panelkit::test;

namespace {

bool Has(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

class SimPrograms : public DeviceServerTest {
protected:
    Json::Value GeneralStatus() { return Call("general_dynamic_status"); }

    // Runs a program found by name on the device's PATH, as a spawn by argument vector finds it.
    std::string RunByName(const std::vector<std::string>& args)
    {
        std::string path;
        for (const char* folder : {"/usr/sbin", "/usr/bin", "/sbin", "/bin"})
            path += server_.devicePath(folder) + ":";
        const char* host = std::getenv("PATH");
        std::vector<std::string> argv{"/usr/bin/env"};
        argv.insert(argv.end(), args.begin(), args.end());
        const std::string out = server_.work() / "by-name.out";
        Process process(argv, out, {{"PATH", path + (host ? host : "/usr/bin:/bin")}});
        EXPECT_EQ(0, process.wait(20000)) << ReadFile(out);
        const std::string text = ReadFile(out);
        ::unlink(out.c_str());
        return text;
    }
};

}  // namespace

TEST_F(SimPrograms, TheProcessListIsTheRoutersAndNotTheHosts)
{
    const std::string processes = GeneralStatus()["processStatus"].asString();
    EXPECT_EQ(0u, processes.find("UID          PID    PPID  C STIME TTY          TIME CMD\n")) << processes;
    for (const char* daemon : {"/sbin/init", "/usr/bin/seriald", "/usr/bin/statusd", "/usr/bin/openvpnd",
                               "/usr/bin/vigild", "/usr/sbin/lighttpd", "/usr/bin/panelkit -c /etc/panelkit/device.json",
                               "/usr/sbin/pppd", "/usr/sbin/dnsmasq", "ps -ef\n"})
        EXPECT_TRUE(Has(processes, daemon)) << "expected " << daemon << " in:\n" << processes;
    EXPECT_FALSE(Has(processes, program_invocation_short_name)) << processes;
    EXPECT_FALSE(Has(processes, server_.work().path())) << "the host's panelkit is listed:\n" << processes;
}

TEST_F(SimPrograms, TopIsABatchSnapshotOfTheSameProcesses)
{
    const std::string top = GeneralStatus()["top"].asString();
    EXPECT_EQ(0u, top.find("Mem: ")) << top;
    EXPECT_TRUE(Has(top, "\nLoad average: 0.08 0.12 0.09 ")) << top;
    EXPECT_TRUE(Has(top, "\n  PID  PPID USER     STAT   VSZ %VSZ %CPU COMMAND\n")) << top;
    EXPECT_TRUE(Has(top, " top -b -n1\n")) << top;
    EXPECT_TRUE(Has(top, " /usr/bin/seriald -d /dev/ttymxc1\n")) << top;
    EXPECT_FALSE(Has(top, program_invocation_short_name)) << top;
}

TEST_F(SimPrograms, UptimeCountsFromTheDevicesBootWithItsLoad)
{
    const std::string uptime = GeneralStatus()["uptime"].asString();
    EXPECT_TRUE(std::regex_match(uptime, std::regex(R"( \d\d:\d\d:\d\d up \d+ min,  load average: 0\.08, 0\.12, 0\.09\n)")))
        << "a device booted just now, got: " << uptime;
}

TEST_F(SimPrograms, TheCommandLogRecordsEveryStatusProgram)
{
    GeneralStatus();
    const std::string log = CommandLog();
    for (const char* call : {"/usr/bin/uptime\n", "/usr/bin/top -b -n1\n", "/bin/ps -ef\n"})
        EXPECT_TRUE(Has(log, call)) << "expected " << call << " in:\n" << log;
}

TEST_F(SimPrograms, TheGeneralPageShowsTheRoutersKernel)
{
    const HttpReply page = Get(server_.port(), "/config/settings/general");
    EXPECT_TRUE(Has(page.body, "<pre>Linux fieldrouter 5.15.71 #1 PREEMPT Sat Nov 1 10:12:44 UTC 2026 armv7l GNU/Linux"))
        << page.body;
    EXPECT_TRUE(Has(CommandLog(), "/bin/uname -a\n")) << CommandLog();
}

TEST_F(SimPrograms, UnameNamesTheHostFromTheStore)
{
    ASSERT_TRUE(server_.storeSet("net/hostname", "excavator-7"));
    EXPECT_EQ("excavator-7\n", RunByName({"uname", "-n"}));
    EXPECT_EQ("Linux excavator-7 5.15.71 armv7l\n", RunByName({"uname", "-m", "-nsr"}));
    EXPECT_EQ("Linux\n", RunByName({"uname"}));
}

TEST_F(SimPrograms, TheProgramsAreFoundByNameWithArgumentVectors)
{
    EXPECT_EQ(0u, RunByName({"ps", "-ef"}).find("UID "));
    EXPECT_EQ(0u, RunByName({"top", "-b", "-n1"}).find("Mem: "));
    EXPECT_TRUE(Has(RunByName({"uptime"}), " up "));
    EXPECT_EQ("5.15.71\n", RunByName({"uname", "-r"}));
    const std::string log = CommandLog();
    for (const char* call : {"/bin/ps -ef\n", "/usr/bin/top -b -n1\n", "/usr/bin/uptime\n", "/bin/uname -r\n"})
        EXPECT_TRUE(Has(log, call)) << "expected " << call << " in:\n" << log;
}

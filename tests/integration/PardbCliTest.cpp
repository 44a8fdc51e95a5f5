// The pardb command-line tool over the device's store, shared with other processes.
#include "Process.h"
#include "TempDir.h"
#include "util/DevicePath.h"
#include <pardb/cPardbLib.h>

#include <gtest/gtest.h>

#include <Poco/File.h>

#include <algorithm>

using namespace panelkit::test;

namespace {

struct Outcome {
    int status;
    std::string out;
};

class PardbCli : public ::testing::Test {
protected:
    void SetUp() override { Poco::File(root_ / "var/lib/pardb").createDirectories(); }

    Outcome Run(std::vector<std::string> args, const std::map<std::string, std::string>& env = {})
    {
        args.insert(args.begin(), PANELKIT_PARDB);
        const std::string log = root_ / "cli.out";
        ::unlink(log.c_str());
        Process cli(args, log, env);
        const int status = cli.wait(10000);
        return {status, ReadFile(log)};
    }

    Outcome RunAt(std::vector<std::string> args)
    {
        args.insert(args.begin(), {"--root", root_.path()});
        return Run(args);
    }

    TempDir root_;
};

}  // namespace

TEST_F(PardbCli, SetThenGetPrintsTheValue)
{
    EXPECT_EQ(0, RunAt({"set", "net/lan_ipaddr", "192.168.1.1"}).status);
    const Outcome got = RunAt({"get", "net/lan_ipaddr"});
    EXPECT_EQ(0, got.status);
    EXPECT_EQ("192.168.1.1\n", got.out);
}

TEST_F(PardbCli, TheRootCanComeFromTheEnvironment)
{
    EXPECT_EQ(0, Run({"set", "/net/hostname", "router"}, {{"PANELKIT_DEVICE_ROOT", root_.path()}}).status);
    EXPECT_EQ("router\n", RunAt({"get", "net/hostname"}).out);
}

TEST_F(PardbCli, TypedValuesAreCheckedAndStoredWithTheirType)
{
    EXPECT_EQ(0, RunAt({"set", "net/lan_advertise_speed", "15", "--int"}).status);
    EXPECT_EQ(0, RunAt({"set", "sys/limit", "71.5", "--float"}).status);
    const Outcome bad = RunAt({"set", "net/lan_advertise_speed", "fast", "--int"});
    EXPECT_EQ(1, bad.status);
    EXPECT_NE(std::string::npos, bad.out.find("pardb: not a whole number: fast")) << bad.out;

    panelkit::util::SetDeviceRoot(root_.path());
    cPardbLib store(PARDB_CLIENT_ID_WEB);
    std::string value;
    PARDB_PAR_T type = PARDB_PAR_UNKNOWN;
    ASSERT_EQ(0, store.getPar("net/lan_advertise_speed", value, &type));
    EXPECT_EQ(0, type);
    EXPECT_EQ("15", value);
    ASSERT_EQ(0, store.getPar("sys/limit", value, &type));
    EXPECT_EQ(1, type);
}

TEST_F(PardbCli, ListPrintsEveryKeyBelowThePrefixSorted)
{
    for (const char* port : {"08080", "00443", "00080"})
        ASSERT_EQ(0, RunAt({"set", std::string("net/portfwd/tcp/") + port + "/d_ip", "192.168.1.9"}).status);
    ASSERT_EQ(0, RunAt({"set", "net/lan_ipaddr", "192.168.1.1"}).status);
    EXPECT_EQ("net/portfwd/tcp/00080/d_ip\nnet/portfwd/tcp/00443/d_ip\nnet/portfwd/tcp/08080/d_ip\n",
              RunAt({"list", "net/portfwd"}).out);
    const std::string all = RunAt({"list"}).out;
    EXPECT_EQ(4, std::count(all.begin(), all.end(), '\n')) << all;
}

TEST_F(PardbCli, DelRemovesTheKeyAndEverythingBelowIt)
{
    ASSERT_EQ(0, RunAt({"set", "net/portfwd/udp/00161/d_ip", "192.168.1.5"}).status);
    ASSERT_EQ(0, RunAt({"set", "net/portfwd/udp/00161/d_port", "161", "--int"}).status);
    ASSERT_EQ(0, RunAt({"set", "net/portfwd/udp2", "kept"}).status);
    EXPECT_EQ(0, RunAt({"del", "net/portfwd/udp"}).status);
    EXPECT_EQ("net/portfwd/udp2\n", RunAt({"list", "net"}).out);
}

TEST_F(PardbCli, MissingKeysAndBadCommandsFailWithAMessage)
{
    const Outcome missing = RunAt({"get", "net/none"});
    EXPECT_EQ(1, missing.status);
    EXPECT_NE(std::string::npos, missing.out.find("pardb: get net/none: no parameter net/none")) << missing.out;
    EXPECT_EQ(1, RunAt({"del", "net/none"}).status);
    const Outcome usage = RunAt({"frobnicate"});
    EXPECT_EQ(1, usage.status);
    EXPECT_NE(std::string::npos, usage.out.find("usage: pardb")) << usage.out;
    EXPECT_EQ(1, Run({}).status);
}

TEST_F(PardbCli, AnUninitialisedDeviceIsRefusedAndLeftUntouched)
{
    TempDir empty;
    const Outcome outcome = Run({"--root", empty.path(), "set", "net/a", "b"});
    EXPECT_EQ(1, outcome.status);
    EXPECT_NE(std::string::npos, outcome.out.find("no parameter store at")) << outcome.out;
    EXPECT_FALSE(empty.exists("var"));
}

TEST_F(PardbCli, WritesOfAnotherProcessAreSeenAtOnce)
{
    // This process keeps its connection open while the tool writes, as panelkit does.
    panelkit::util::SetDeviceRoot(root_.path());
    cPardbLib store(PARDB_CLIENT_ID_WEB);
    std::string value;
    ASSERT_EQ(0, store.setPar("net/lan_dns1", std::string("8.8.8.8")));
    ASSERT_EQ(0, store.getPar("net/lan_dns1", value));
    EXPECT_EQ("8.8.8.8", value);
    ASSERT_EQ(0, RunAt({"set", "net/lan_dns1", "1.1.1.1"}).status);
    ASSERT_EQ(0, store.getPar("net/lan_dns1", value));
    EXPECT_EQ("1.1.1.1", value);
    ASSERT_EQ(0, store.setPar("net/lan_dns2", std::string("9.9.9.9")));
    EXPECT_EQ("9.9.9.9\n", RunAt({"get", "net/lan_dns2"}).out);
}

TEST_F(PardbCli, ARefusedKeyFailsToBeSetAndKeepsItsValue)
{
    ASSERT_EQ(0, RunAt({"set", "net/hostname", "router"}).status);
    EXPECT_EQ(0, RunAt({"refuse", "net/hostname"}).status);
    const Outcome set = RunAt({"set", "net/hostname", "excavator"});
    EXPECT_EQ(1, set.status);
    EXPECT_EQ("pardb: set net/hostname: the store refuses to write net/hostname\n", set.out);
    const Outcome del = RunAt({"del", "net/hostname"});
    EXPECT_EQ(1, del.status);
    EXPECT_EQ("pardb: del net/hostname: the store refuses to delete net/hostname\n", del.out);
    EXPECT_EQ("router\n", RunAt({"get", "net/hostname"}).out);
}

TEST_F(PardbCli, OtherKeysAreStillWrittenBesideARefusedOne)
{
    EXPECT_EQ(0, RunAt({"refuse", "net/lan_dns1"}).status);
    EXPECT_EQ(1, RunAt({"set", "net/lan_dns1", "1.1.1.1"}).status);
    EXPECT_EQ(0, RunAt({"set", "net/lan_dns2", "1.0.0.1"}).status);
    EXPECT_EQ("net/lan_dns2\n", RunAt({"list", "net"}).out) << "a refused key is not a stored one";
    EXPECT_EQ(1, RunAt({"get", "net/lan_dns1"}).status);
}

TEST_F(PardbCli, RefuseNeedsOneKey)
{
    const Outcome none = RunAt({"refuse"});
    EXPECT_EQ(1, none.status);
    EXPECT_NE(std::string::npos, none.out.find("pardb [--root DIR] refuse KEY")) << none.out;
    EXPECT_EQ(1, RunAt({"refuse", ""}).status);
}

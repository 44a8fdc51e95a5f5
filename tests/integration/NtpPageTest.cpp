// The NTP page on the real binary and a simulated device: saving around the daemon's stop and start, the clock
// jump, and the status of chronyd and of ntpd as the device's programs report them.
#include "DeviceServerTest.h"
#include "Http.h"
#include "Server.h"

#include <gtest/gtest.h>

#include <cstdio>

using namespace panelkit::test;

namespace {

const char kNtp[] = "/config/network/ntp";

bool Has(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

class NtpPageServer : public DeviceServerTest {
protected:
    HttpReply Save(const std::vector<std::string>& servers, bool enabled = true)
    {
        std::vector<std::pair<std::string, std::string>> fields;
        if (enabled)
            fields.emplace_back("ntpdEnabled", "y");
        for (std::size_t i = 0; i < servers.size(); ++i)
            fields.emplace_back("server" + std::to_string(i), servers[i]);
        fields.emplace_back("submit", "Save");
        return PostForm(server_.port(), kNtp, fields);
    }

    void UseNtpd() { ASSERT_EQ(0, std::remove(server_.devicePath("/usr/bin/chronyc").c_str())); }
};

}  // namespace

TEST_F(NtpPageServer, SavingFourEmptyServersStoresThemAndRestartsTheDaemon)
{
    const HttpReply reply = Save({"", "", "", ""});
    EXPECT_EQ(200, reply.status);
    EXPECT_TRUE(Has(reply.body, "Success: The form values were saved.")) << reply.body.substr(0, 2000);
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ("", server_.storeGet("system/ntpd/servers/" + std::to_string(i)));
    EXPECT_EQ("yes", server_.storeGet("system/ntpd/enabled"));
    EXPECT_TRUE(Has(CommandLog(), "/etc/init.d/ntpd stop\n/etc/init.d/ntpd start\n")) << CommandLog();
    EXPECT_FALSE(server_.rebootMarked());
    EXPECT_EQ(Json::Value(true), Call("ntpd_status")["running"]);
}

TEST_F(NtpPageServer, AFailedWriteStillStartsTheDaemonAgain)
{
    ASSERT_TRUE(server_.storeRefuse("system/ntpd/servers/2"));
    const HttpReply reply = Save({"a.example", "b.example", "c.example", "d.example"}, false);
    EXPECT_TRUE(Has(reply.body, "Save error: The form values were not saved.")) << reply.body.substr(0, 2000);
    EXPECT_EQ("no", server_.storeGet("system/ntpd/enabled"));
    EXPECT_EQ("b.example", server_.storeGet("system/ntpd/servers/1"));
    EXPECT_EQ("2.pool.ntp.org", server_.storeGet("system/ntpd/servers/2"));
    EXPECT_EQ("3.pool.ntp.org", server_.storeGet("system/ntpd/servers/3"));
    EXPECT_TRUE(Has(CommandLog(), "/etc/init.d/ntpd stop\n/etc/init.d/ntpd start\n")) << CommandLog();
    EXPECT_TRUE(Has(server_.log(), "FAIL pardblib::setPar \"system/ntpd/servers/2\"")) << server_.log();
    // Switched off, the daemon stays down.
    EXPECT_EQ(Json::Value(false), Call("ntpd_status")["running"]);
}

TEST_F(NtpPageServer, JumpSystemTimeOnlyAsksChronyd)
{
    const HttpReply reply =
        PostForm(server_.port(), kNtp, {{"time", "$(date -s 2030-01-01)"}, {"submit", "Jump system time"}});
    EXPECT_EQ(200, reply.status);
    EXPECT_TRUE(Has(reply.body, "\"tabs\":{\"selected\":1}"));
    EXPECT_FALSE(Has(reply.body, "form_result_msg"));
    EXPECT_EQ("/usr/bin/chronyc online\n", CommandLog());
}

TEST_F(NtpPageServer, AnUnknownSubmitRunsNothing)
{
    const HttpReply reply = PostForm(server_.port(), kNtp, {{"server0", "x.example"}, {"submit", "Restart"}});
    EXPECT_EQ(200, reply.status);
    EXPECT_EQ("", CommandLog());
    EXPECT_EQ("0.pool.ntp.org", server_.storeGet("system/ntpd/servers/0"));
    EXPECT_TRUE(Has(server_.log(), "Unknown submit received")) << server_.log();
}

TEST_F(NtpPageServer, ChronydStatusFromTheDevicesChronyc)
{
    const Json::Value status = Call("ntpd_status");
    EXPECT_EQ((std::vector<std::string>{"clients", "isChronyd", "rawOutput", "running", "tracking"}),
              status.getMemberNames());
    EXPECT_EQ(Json::Value(true), status["isChronyd"]);
    EXPECT_EQ(Json::Value(true), status["running"]);
    EXPECT_TRUE(Has(status["tracking"].asString(), "Reference ID"));
    EXPECT_TRUE(Has(status["rawOutput"].asString(), "^* 192.53.103.108"));
    EXPECT_TRUE(Has(status["clients"].asString(), "192.168.1.12"));
}

TEST_F(NtpPageServer, TrackingWithoutAReferenceIdIsAStoppedChronyd)
{
    server_.writeDeviceFile("/usr/bin/chronyc", "#!/bin/sh\necho 'Stratum         : 0'\n", true);
    const Json::Value status = Call("ntpd_status");
    EXPECT_EQ((std::vector<std::string>{"isChronyd", "running"}), status.getMemberNames());
    EXPECT_EQ(Json::Value(true), status["isChronyd"]);
    EXPECT_EQ(Json::Value(false), status["running"]);
}

TEST_F(NtpPageServer, NtpdWithAGpsAndItsPulseIsSynchronisedToGpsWithPps)
{
    UseNtpd();
    server_.writeDeviceFile("/etc/sim/ntp-gps", "");
    const Json::Value status = Call("ntpd_status");
    EXPECT_EQ(Json::Value(true), status["running"]);
    EXPECT_EQ(Json::Value(true), status["hasGps"]);
    EXPECT_EQ(Json::Value(true), status["gpsSync"]);
    EXPECT_EQ(Json::Value(true), status["ppsSync"]);
    EXPECT_EQ(Json::Value("GPS with PPS"), status["syncTo"]);
    EXPECT_TRUE(Has(CommandLog(), "/usr/bin/ntpq -pn\n"));
}

TEST_F(NtpPageServer, AStoppedNtpdRefusesTheConnection)
{
    UseNtpd();
    Save({"a.example", "", "", ""}, false);
    const Json::Value status = Call("ntpd_status");
    EXPECT_EQ((std::vector<std::string>{"gpsSync", "hasGps", "ppsSync", "rawOutput", "running", "syncTo"}),
              status.getMemberNames());
    EXPECT_EQ(Json::Value(false), status["running"]);
    EXPECT_EQ(Json::Value(false), status["hasGps"]);
    EXPECT_EQ(Json::Value(""), status["syncTo"]);
    EXPECT_EQ("ntpq: read: Connection refused\n", status["rawOutput"].asString());
}

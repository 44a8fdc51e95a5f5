// The NTP page: the switch and servers saved with the daemon stopped, the clock jump, and both daemons' status.
#include "PageFixture.h"

#include "pages/Ntp.h"

#include <Poco/File.h>

using namespace panelkit;
using namespace panelkit::test;
using ::testing::HasSubstr;
using ::testing::Not;

namespace {

class NtpPage : public PageFixture {
protected:
    // The servers and the box as posted by the configuration tab's "Save".
    PageReply Save(const std::string& enabled, const std::vector<std::string>& servers)
    {
        Fields fields;
        if (!enabled.empty())
            fields.emplace_back("ntpdEnabled", enabled);
        for (std::size_t i = 0; i < servers.size(); ++i)
            fields.emplace_back("server" + std::to_string(i), servers[i]);
        fields.emplace_back("submit", "Save");
        return Post(kNtp, fields);
    }

    // The daemon the device runs is ntpd once chronyc is gone.
    void UseNtpd() { Poco::File(DevicePath("/usr/bin/chronyc")).remove(); }

    // As the init script leaves it after "stop".
    void StopDaemon() { WriteDeviceFile("/var/lib/sim/ntpd-stopped", ""); }

    // Replaces ntpq with one that prints the text.
    void NtpqPrints(const std::string& text)
    {
        WriteDeviceFile("/usr/bin/ntpq", "#!/bin/sh\ncat <<'OUT'\n" + text + "OUT\n", true);
    }

    static constexpr const char* kNtp = "/config/network/ntp";
};

// An init script that notes what the store holds for server 0 whenever it is run.
const char kNotingInitScript[] = "#!/bin/sh\n"
                                 "root=$(cd \"$(dirname \"$0\")/../..\" && pwd)\n"
                                 "printf 'ntpd %s sees %s\\n' \"$1\" \"$(\"$root/usr/lib/sim/pardb\" --root \"$root\" "
                                 "get system/ntpd/servers/0)\" >> \"$root/var/log/sim-commands.log\"\n";

const char kGpsPeers[] =
    "     remote           refid      st t when poll reach   delay   offset  jitter\n"
    "==============================================================================\n"
    "*127.127.28.0    .GPS.            0 l    5   16  377    0.000    0.012   0.004\n"
    "o127.127.28.1    .PPS.            0 l    4   16  377    0.000    0.001   0.002\n"
    "+192.53.103.108  .PTB.            1 u   34   64  377   18.211    0.212   0.090\n";

}  // namespace

// The form.

TEST_F(NtpPage, TheFormShowsTheStoredSwitchAndServers)
{
    const auto reply = Get(kNtp);
    ASSERT_EQ(200, reply.status);
    EXPECT_THAT(reply.body, HasSubstr("NTP Servers"));
    EXPECT_THAT(reply.body, HasSubstr("id=\"ntpd_enabled\" name=\"ntpdEnabled\""));
    EXPECT_THAT(reply.body, HasSubstr("Allow ntpd"));
    for (int i = 0; i < 4; ++i) {
        const std::string n = std::to_string(i);
        EXPECT_THAT(reply.body, HasSubstr("Server " + n + " Address"));
        EXPECT_THAT(reply.body,
                    HasSubstr("id=\"cfg_ntpd_server" + n + "\" name=\"server" + n + "\" value=\"" + n + ".pool.ntp.org\""));
    }
    EXPECT_THAT(reply.body, HasSubstr("id=\"cfg_ntpd_save\" name=\"submit\" value=\"Save\""));
    EXPECT_THAT(reply.body, HasSubstr("checked=\"checked\""));
    EXPECT_THAT(reply.body, HasSubstr("id=\"ntpd_status\""));
    EXPECT_THAT(reply.body, HasSubstr("/images/spinner.gif"));
    EXPECT_EQ("", CommandLog());
}

TEST_F(NtpPage, SavingFourEmptyServersStoresEmptyTextsAndRestartsTheDaemon)
{
    const auto reply = Save("y", {"", "", "", ""});
    EXPECT_THAT(reply.body, HasSubstr("Success: The form values were saved.")) << reply.body;
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ("", StoreGet("system/ntpd/servers/" + std::to_string(i)));
    EXPECT_EQ("yes", StoreGet("system/ntpd/enabled"));
    EXPECT_EQ("/etc/init.d/ntpd stop\n/etc/init.d/ntpd start\n", CommandLog());
    EXPECT_FALSE(RebootMarked());
}

TEST_F(NtpPage, AnyTextIsStoredAsTypedAndShownAgain)
{
    Save("", {"ntp.site.local", "10.0.0.1", "not a name; reboot", "  "});
    EXPECT_EQ("no", StoreGet("system/ntpd/enabled"));
    EXPECT_EQ("ntp.site.local", StoreGet("system/ntpd/servers/0"));
    EXPECT_EQ("10.0.0.1", StoreGet("system/ntpd/servers/1"));
    EXPECT_EQ("not a name; reboot", StoreGet("system/ntpd/servers/2"));
    EXPECT_EQ("  ", StoreGet("system/ntpd/servers/3"));
    const std::string page = Get(kNtp).body;
    EXPECT_THAT(page, HasSubstr("name=\"server2\" value=\"not a name; reboot\""));
    EXPECT_THAT(page, Not(HasSubstr("checked=\"checked\"")));
    EXPECT_THAT(CommandLog(), Not(HasSubstr("reboot")));
}

TEST_F(NtpPage, TheWritesHappenWhileTheDaemonIsStopped)
{
    WriteDeviceFile("/etc/init.d/ntpd", kNotingInitScript, true);
    Save("y", {"new.example", "", "", ""});
    EXPECT_EQ("ntpd stop sees 0.pool.ntp.org\nntpd start sees new.example\n", CommandLog());
}

TEST_F(NtpPage, TheKeysAreWrittenInOrderStoppingAtTheFirstFailure)
{
    StoreRefuse("system/ntpd/servers/1");
    const auto reply = Save("", {"a.example", "b.example", "c.example", "d.example"});
    EXPECT_THAT(reply.body, HasSubstr("Save error: The form values were not saved.")) << reply.body;
    EXPECT_EQ("no", StoreGet("system/ntpd/enabled"));
    EXPECT_EQ("a.example", StoreGet("system/ntpd/servers/0"));
    EXPECT_EQ("1.pool.ntp.org", StoreGet("system/ntpd/servers/1"));
    EXPECT_EQ("2.pool.ntp.org", StoreGet("system/ntpd/servers/2"));
    EXPECT_EQ("3.pool.ntp.org", StoreGet("system/ntpd/servers/3"));
    // Stopped before the writes, so started again whatever they did.
    EXPECT_EQ("/etc/init.d/ntpd stop\n/etc/init.d/ntpd start\n", CommandLog());
    // The form shows what is stored.
    EXPECT_THAT(reply.body, HasSubstr("name=\"server2\" value=\"2.pool.ntp.org\""));
}

TEST_F(NtpPage, ARefusedSwitchWritesNoServer)
{
    StoreRefuse("system/ntpd/enabled");
    const auto reply = Save("y", {"a.example", "", "", ""});
    EXPECT_THAT(reply.body, HasSubstr("Save error: The form values were not saved."));
    EXPECT_EQ("0.pool.ntp.org", StoreGet("system/ntpd/servers/0"));
    EXPECT_THAT(CommandLog(), HasSubstr("/etc/init.d/ntpd start\n"));
}

TEST_F(NtpPage, AnUnknownSubmitDoesNothing)
{
    const auto reply = Post(kNtp, {{"server0", "x.example"}, {"submit", "Apply"}});
    EXPECT_EQ(200, reply.status);
    EXPECT_EQ("0.pool.ntp.org", StoreGet("system/ntpd/servers/0"));
    EXPECT_EQ("", CommandLog());
    EXPECT_THAT(reply.body, Not(HasSubstr("The form values were saved")));
}

// The clock jump.

TEST_F(NtpPage, JumpSystemTimeAsksChronydToGoOnlineAndShowsTheStatusTab)
{
    const auto reply = Post(kNtp, {{"submit", "Jump system time"}});
    EXPECT_EQ(200, reply.status);
    EXPECT_EQ("/usr/bin/chronyc online\n", CommandLog());
    EXPECT_THAT(reply.body, HasSubstr("\"tabs\":{\"selected\":1}"));
    EXPECT_THAT(reply.body, Not(HasSubstr("The form values were saved")));
    EXPECT_THAT(reply.body, Not(HasSubstr("Save error")));
    EXPECT_EQ("0.pool.ntp.org", StoreGet("system/ntpd/servers/0"));
}

TEST_F(NtpPage, TheJumpTakesNothingElseThatWasPosted)
{
    Post(kNtp, {{"time", "2030-01-01 00:00; date -s 2030"}, {"server0", "$(reboot)"}, {"submit", "Jump system time"}});
    EXPECT_EQ("/usr/bin/chronyc online\n", CommandLog());
    EXPECT_EQ("0.pool.ntp.org", StoreGet("system/ntpd/servers/0"));
}

TEST_F(NtpPage, TheStatusTabIsDrawnByThePagesOwnScript)
{
    const std::string page = Get(kNtp).body;
    EXPECT_THAT(page, HasSubstr("\"method\":\"ntpd_status\""));
    EXPECT_THAT(page, HasSubstr("\"sections\":[]"));
    EXPECT_THAT(page, HasSubstr("/js/status.js"));
    EXPECT_THAT(page, HasSubstr("/js/ntp.js"));
    // The common script first: the page's own registers its renderer with it.
    EXPECT_LT(page.find("/js/status.js"), page.find("/js/ntp.js"));
}

// chronyd.

TEST_F(NtpPage, ARunningChronydShowsTrackingSourcesAndClients)
{
    const Json::Value status = Call("ntpd_status");
    EXPECT_EQ((std::vector<std::string>{"clients", "isChronyd", "rawOutput", "running", "tracking"}),
              status.getMemberNames());
    ASSERT_TRUE(status["isChronyd"].isBool());
    EXPECT_TRUE(status["isChronyd"].asBool());
    ASSERT_TRUE(status["running"].isBool());
    EXPECT_TRUE(status["running"].asBool());
    EXPECT_THAT(status["tracking"].asString(), HasSubstr("Reference ID    : C0356C6C (192.53.103.108)"));
    EXPECT_THAT(status["rawOutput"].asString(), HasSubstr("Source mode"));
    EXPECT_THAT(status["rawOutput"].asString(), HasSubstr("^* 192.53.103.108"));
    EXPECT_THAT(status["clients"].asString(), HasSubstr("192.168.1.10"));
    EXPECT_EQ("/usr/bin/chronyc -n tracking\n/usr/bin/chronyc -n sources -v\n/usr/bin/chronyc -n clients\n",
              CommandLog());
}

TEST_F(NtpPage, TrackingWithoutAReferenceIdShowsOnlyAStoppedChronyd)
{
    WriteDeviceFile("/usr/bin/chronyc", "#!/bin/sh\nprintf 'Stratum         : 0\\nLeap status     : Not synchronised\\n'\n",
                    true);
    const Json::Value status = Call("ntpd_status");
    EXPECT_EQ((std::vector<std::string>{"isChronyd", "running"}), status.getMemberNames());
    EXPECT_EQ(Json::Value(true), status["isChronyd"]);
    EXPECT_EQ(Json::Value(false), status["running"]);
}

TEST_F(NtpPage, AStoppedChronydAnswersNothingButItsState)
{
    StopDaemon();
    const Json::Value status = Call("ntpd_status");
    EXPECT_EQ((std::vector<std::string>{"isChronyd", "running"}), status.getMemberNames());
    EXPECT_EQ(Json::Value(false), status["running"]);
    EXPECT_EQ("/usr/bin/chronyc -n tracking\n", CommandLog());
}

TEST_F(NtpPage, SavingTheSwitchOffLeavesTheDaemonStopped)
{
    Save("", {"a.example", "", "", ""});
    EXPECT_EQ(Json::Value(false), Call("ntpd_status")["running"]);
    Save("y", {"a.example", "", "", ""});
    EXPECT_EQ(Json::Value(true), Call("ntpd_status")["running"]);
}

// ntpd.

namespace {

const std::vector<std::string> kNtpdMembers{"gpsSync", "hasGps", "ppsSync", "rawOutput", "running", "syncTo"};

// The members ntpd's reply always has, each of its type.
void ExpectNtpdReply(const Json::Value& status)
{
    ASSERT_TRUE(status.isObject());
    EXPECT_EQ(kNtpdMembers, status.getMemberNames());
    for (const char* flag : {"running", "hasGps", "gpsSync", "ppsSync"})
        EXPECT_TRUE(status[flag].isBool()) << flag;
    EXPECT_TRUE(status["syncTo"].isString());
    EXPECT_TRUE(status["rawOutput"].isString());
}

}  // namespace

TEST_F(NtpPage, WithoutChronycTheStatusIsNtpdsPeerListing)
{
    UseNtpd();
    const Json::Value status = Call("ntpd_status");
    ExpectNtpdReply(status);
    EXPECT_EQ(Json::Value(true), status["running"]);
    EXPECT_EQ(Json::Value(false), status["hasGps"]);
    EXPECT_EQ(Json::Value(false), status["gpsSync"]);
    EXPECT_EQ(Json::Value(false), status["ppsSync"]);
    EXPECT_EQ("192.53.103.108", status["syncTo"].asString());
    EXPECT_THAT(status["rawOutput"].asString(), HasSubstr("*192.53.103.108  .PTB."));
    EXPECT_EQ("/usr/bin/ntpq -pn\n", CommandLog());
}

TEST_F(NtpPage, AGpsSelectedWithAPpsInUseIsGpsWithPps)
{
    UseNtpd();
    WriteDeviceFile("/etc/sim/ntp-gps", "");
    const Json::Value status = Call("ntpd_status");
    ExpectNtpdReply(status);
    EXPECT_EQ(Json::Value(true), status["running"]);
    EXPECT_EQ(Json::Value(true), status["hasGps"]);
    EXPECT_EQ(Json::Value(true), status["gpsSync"]);
    EXPECT_EQ(Json::Value(true), status["ppsSync"]);
    EXPECT_EQ("GPS with PPS", status["syncTo"].asString());
    EXPECT_THAT(status["rawOutput"].asString(), HasSubstr(".GPS."));
}

TEST_F(NtpPage, ARefusedConnectionIsAStoppedNtpdWithItsComplaint)
{
    UseNtpd();
    StopDaemon();
    const Json::Value status = Call("ntpd_status");
    ExpectNtpdReply(status);
    EXPECT_EQ(Json::Value(false), status["running"]);
    EXPECT_EQ(Json::Value(false), status["hasGps"]);
    EXPECT_EQ(Json::Value(false), status["gpsSync"]);
    EXPECT_EQ(Json::Value(false), status["ppsSync"]);
    EXPECT_EQ("", status["syncTo"].asString());
    // ntpq's complaint comes on its standard error.
    EXPECT_EQ("ntpq: read: Connection refused\n", status["rawOutput"].asString());
}

TEST_F(NtpPage, NtpqsStandardErrorIsPartOfTheListing)
{
    UseNtpd();
    WriteDeviceFile("/usr/bin/ntpq", "#!/bin/sh\necho 'ntpq: read: Connection refused' >&2\n", true);
    const Json::Value status = Call("ntpd_status");
    EXPECT_EQ(Json::Value(false), status["running"]);
    EXPECT_EQ("ntpq: read: Connection refused\n", status["rawOutput"].asString());
}

TEST_F(NtpPage, NtpqsOwnOutputDecidesTheSynchronisation)
{
    UseNtpd();
    NtpqPrints(kGpsPeers);
    EXPECT_EQ("GPS with PPS", Call("ntpd_status")["syncTo"].asString());
    NtpqPrints("ntpq: read: Connection refused\n");
    EXPECT_EQ(Json::Value(false), Call("ntpd_status")["running"]);
}

TEST(NtpdStatus, GpsWithPps)
{
    const Json::Value status = pages::NtpdStatus(kGpsPeers);
    ExpectNtpdReply(status);
    EXPECT_EQ("GPS with PPS", status["syncTo"].asString());
    EXPECT_EQ(Json::Value(true), status["hasGps"]);
    EXPECT_EQ(Json::Value(true), status["gpsSync"]);
    EXPECT_EQ(Json::Value(true), status["ppsSync"]);
    EXPECT_EQ(Json::Value(true), status["running"]);
    EXPECT_EQ(kGpsPeers, status["rawOutput"].asString());
}

TEST(NtpdStatus, OnlyTheGpsSelected)
{
    const Json::Value status = pages::NtpdStatus("*127.127.28.0    .GPS.   0 l\n+127.127.28.1    .PPS.   0 l\n");
    EXPECT_EQ(Json::Value(true), status["gpsSync"]);
    EXPECT_EQ(Json::Value(false), status["ppsSync"]);
    EXPECT_EQ("GPS", status["syncTo"].asString());
}

TEST(NtpdStatus, OnlyThePpsSelected)
{
    const Json::Value status = pages::NtpdStatus("+127.127.28.0    .GPS.   0 l\n*127.127.28.1    .PPS.   0 l\n");
    EXPECT_EQ(Json::Value(true), status["hasGps"]);
    EXPECT_EQ(Json::Value(false), status["gpsSync"]);
    EXPECT_EQ(Json::Value(true), status["ppsSync"]);
    EXPECT_EQ("PPS", status["syncTo"].asString());
}

TEST(NtpdStatus, APpsWithoutAGpsIsOnlyAPeer)
{
    const Json::Value status = pages::NtpdStatus("o127.127.22.0    .PPS.   0 l\n*10.1.2.3   .PTB.  1 u\n");
    ExpectNtpdReply(status);
    EXPECT_EQ(Json::Value(false), status["hasGps"]);
    EXPECT_EQ(Json::Value(false), status["ppsSync"]);
    EXPECT_EQ("10.1.2.3", status["syncTo"].asString());
}

TEST(NtpdStatus, NoSelectedPeerIsSynchronisedToNothing)
{
    const Json::Value status = pages::NtpdStatus("+10.1.2.3   .PTB.  1 u\n 10.1.2.4   .INIT. 16 u\n");
    EXPECT_EQ(Json::Value(true), status["running"]);
    EXPECT_EQ(Json::Value(""), status["syncTo"]);
}

TEST(NtpdStatus, ConnectionRefused)
{
    const Json::Value status = pages::NtpdStatus("Connection refused");
    ExpectNtpdReply(status);
    EXPECT_EQ(Json::Value(false), status["running"]);
    for (const char* flag : {"hasGps", "gpsSync", "ppsSync"})
        EXPECT_EQ(Json::Value(false), status[flag]) << flag;
    EXPECT_EQ(Json::Value(""), status["syncTo"]);
    EXPECT_EQ("Connection refused", status["rawOutput"].asString());
}

TEST(NtpdStatus, AGpsListedWhileRefusedIsNoGps)
{
    const Json::Value status = pages::NtpdStatus(std::string(kGpsPeers) + "Connection refused\n");
    EXPECT_EQ(Json::Value(false), status["running"]);
    EXPECT_EQ(Json::Value(false), status["hasGps"]);
    EXPECT_EQ(Json::Value(false), status["gpsSync"]);
    EXPECT_EQ(Json::Value(""), status["syncTo"]);
}

// The parameter store through util::Pardb: neutral results, the log lines, listing order, shared use.
#include "TempDir.h"
#include "util/DevicePath.h"
#include "util/Pardb.h"
#include "web/Log.h"
#include "web/Settings.h"

#include <gtest/gtest.h>

#include <Poco/File.h>

#include <sqlite3.h>

#include <cstdio>
#include <fstream>
#include <thread>

using panelkit::test::TempDir;
using panelkit::util::Pardb;

namespace {

// Each test gets its own initialised device root; the process's shared client follows it.
class PardbStore : public ::testing::Test {
protected:
    void SetUp() override
    {
        Poco::File(root_ / "var/lib/pardb").createDirectories();
        panelkit::util::SetDeviceRoot(root_.path());
        Json::Value config;
        config["logging"]["level"] = "debug";
        panelkit::web::Log::Configure(panelkit::web::Settings(config));
    }

    // Captures what the process writes to standard error while fn runs.
    template <class Fn>
    std::string StderrOf(Fn fn)
    {
        testing::internal::CaptureStderr();
        fn();
        return testing::internal::GetCapturedStderr();
    }

    static int Lines(const std::string& text, const std::string& needle)
    {
        int count = 0;
        for (auto at = text.find(needle); at != std::string::npos; at = text.find(needle, at + 1))
            ++count;
        return count;
    }

    TempDir root_;
};

}  // namespace

TEST_F(PardbStore, ValuesComeBackWithTheirTypes)
{
    ASSERT_TRUE(Pardb::Set("net/lan_ipaddr", std::string("192.168.1.1")));
    ASSERT_TRUE(Pardb::Set("net/lan_advertise_speed", 15));
    ASSERT_TRUE(Pardb::Set("sys/temperature_limit", 71.5f));
    EXPECT_EQ("192.168.1.1", Pardb::GetString("net/lan_ipaddr"));
    EXPECT_EQ(15, Pardb::GetInt("net/lan_advertise_speed"));
    EXPECT_FLOAT_EQ(71.5f, Pardb::GetFloat("sys/temperature_limit"));
    std::string value;
    PARDB_PAR_T type = PARDB_PAR_UNKNOWN;
    ASSERT_TRUE(Pardb::Get("net/lan_advertise_speed", value, type));
    EXPECT_EQ("15", value);
    EXPECT_EQ(0, type);
    ASSERT_TRUE(Pardb::Get("sys/temperature_limit", value, type));
    EXPECT_EQ(1, type);
    ASSERT_TRUE(Pardb::Get("net/lan_ipaddr", value, type));
    EXPECT_EQ(2, type);
}

TEST_F(PardbStore, GetIntOnAMissingKeyIsZeroWithOneDebugLine)
{
    int value = -1;
    const std::string log = StderrOf([&] { value = Pardb::GetInt("net/missing"); });
    EXPECT_EQ(0, value);
    EXPECT_EQ(1, Lines(log, "panelkit, debug: FAIL pardblib::getPar \"net/missing\"")) << log;
    EXPECT_EQ(1, Lines(log, "\n")) << log;
}

TEST_F(PardbStore, GetStringOnAMissingKeyIsEmpty)
{
    EXPECT_EQ("", Pardb::GetString("net/missing"));
    EXPECT_FLOAT_EQ(0.0f, Pardb::GetFloat("net/missing"));
}

TEST_F(PardbStore, IntFromANumericStringConvertsAndFromTextFails)
{
    ASSERT_TRUE(Pardb::Set("net/a", std::string("42")));
    ASSERT_TRUE(Pardb::Set("net/b", std::string("yes")));
    EXPECT_EQ(42, Pardb::GetInt("net/a"));
    const std::string log = StderrOf([] { EXPECT_EQ(0, Pardb::GetInt("net/b")); });
    EXPECT_EQ(1, Lines(log, "FAIL pardblib::getPar \"net/b\"")) << log;
}

TEST_F(PardbStore, RejectedSetIsFalseWithOneErrorLine)
{
    bool stored = true;
    const std::string log = StderrOf([&] { stored = Pardb::Set("", std::string("x")); });
    EXPECT_FALSE(stored);
    EXPECT_EQ(1, Lines(log, "panelkit, error: FAIL pardblib::setPar \"\"")) << log;
}

TEST_F(PardbStore, SuccessfulSetLogsNothing)
{
    const std::string log = StderrOf([] { EXPECT_TRUE(Pardb::Set("net/lan_dns1", std::string("8.8.8.8"))); });
    EXPECT_EQ("", log);
}

TEST_F(PardbStore, ListOfAPrefixWithoutChildrenIsEmpty)
{
    ASSERT_TRUE(Pardb::Set("net/portfwd", std::string("x")));
    EXPECT_TRUE(Pardb::GetList("net/portfwd/tcp").empty());
    EXPECT_TRUE(Pardb::GetList("nothing").empty());
}

TEST_F(PardbStore, ListIsSortedByteWiseWithFullNames)
{
    ASSERT_TRUE(Pardb::Set("net/portfwd/tcp/00443/d_ip", std::string("192.168.1.20")));
    ASSERT_TRUE(Pardb::Set("net/portfwd/tcp/00080/d_ip", std::string("192.168.1.10")));
    ASSERT_TRUE(Pardb::Set("net/portfwd/tcp/08080/d_ip", std::string("192.168.1.30")));
    ASSERT_TRUE(Pardb::Set("net/portfwd/tcpx", std::string("not below the prefix")));
    const std::vector<std::string> expected{"net/portfwd/tcp/00080/d_ip", "net/portfwd/tcp/00443/d_ip",
                                            "net/portfwd/tcp/08080/d_ip"};
    EXPECT_EQ(expected, Pardb::GetList("net/portfwd/tcp"));
}

TEST_F(PardbStore, ExistsIsTrueForAnEmptyString)
{
    ASSERT_TRUE(Pardb::Set("net/lan_dns_suffix", std::string("")));
    EXPECT_TRUE(Pardb::Exists("net/lan_dns_suffix"));
    EXPECT_FALSE(Pardb::Exists("net/lan_dns_other"));
}

TEST_F(PardbStore, KeysWithAndWithoutALeadingSlashAreOneKey)
{
    ASSERT_TRUE(Pardb::Set("/net/openvpn/enabled", std::string("yes")));
    EXPECT_EQ("yes", Pardb::GetString("net/openvpn/enabled"));
    ASSERT_TRUE(Pardb::Set("net/openvpn/enabled", std::string("no")));
    EXPECT_EQ("no", Pardb::GetString("//net/openvpn/enabled"));
    EXPECT_EQ(std::vector<std::string>{"net/openvpn/enabled"}, Pardb::GetList("/net/openvpn"));
}

TEST_F(PardbStore, DeleteRemovesTheKeyAndFailsWhenNothingIsThere)
{
    ASSERT_TRUE(Pardb::Set("net/portfwd/udp/00161/d_ip", std::string("192.168.1.5")));
    EXPECT_TRUE(Pardb::Delete("net/portfwd/udp/00161/d_ip"));
    EXPECT_FALSE(Pardb::Exists("net/portfwd/udp/00161/d_ip"));
    const std::string log = StderrOf([] { EXPECT_FALSE(Pardb::Delete("net/portfwd/udp/00161/d_ip")); });
    EXPECT_EQ(1, Lines(log, "panelkit, error: FAIL pardblib::delPar \"net/portfwd/udp/00161/d_ip\"")) << log;
}

TEST_F(PardbStore, AddFileKeepsContentAndModeAndFailsForAMissingFile)
{
    root_.write("upload.ovpn", "client\n<cert>\n</cert>\n");
    EXPECT_TRUE(Pardb::AddFile("net/openvpn/config", root_ / "upload.ovpn", 0666));
    EXPECT_EQ(root_ / "upload.ovpn", Pardb::GetString("net/openvpn/config"));
    const std::string log = StderrOf([&] { EXPECT_FALSE(Pardb::AddFile("net/openvpn/config", root_ / "none", 0666)); });
    EXPECT_EQ(1, Lines(log, "FAIL pardblib::addFile \"net/openvpn/config\"")) << log;
}

TEST_F(PardbStore, GetParCopiesIntoTheCallersBuffer)
{
    ASSERT_TRUE(Pardb::Set("cellular/apn", std::string("internet")));
    char buffer[PARDB_MAX_VALUE] = {};
    EXPECT_EQ(0, Pardb::GetPar("cellular/apn", buffer));
    EXPECT_STREQ("internet", buffer);
    EXPECT_NE(0, Pardb::GetPar("cellular/none", buffer));
}

TEST_F(PardbStore, TwoThreadsAskingFirstCreateOneClientForTheWebApplication)
{
    cPardbLib* first = nullptr;
    cPardbLib* second = nullptr;
    std::thread a([&] { first = &Pardb::lib(); });
    std::thread b([&] { second = &Pardb::lib(); });
    a.join();
    b.join();
    EXPECT_EQ(first, second);
    EXPECT_EQ(3, Pardb::lib().client());
}

TEST_F(PardbStore, ManyThreadsWritingAndReadingLoseNothing)
{
    std::vector<std::thread> writers;
    for (int t = 0; t < 4; ++t)
        writers.emplace_back([t] {
            for (int i = 0; i < 25; ++i)
                Pardb::Set("load/" + std::to_string(t) + "/" + std::to_string(i), i);
        });
    for (auto& w : writers)
        w.join();
    EXPECT_EQ(100u, Pardb::GetList("load").size());
    EXPECT_EQ(24, Pardb::GetInt("load/3/24"));
}

// Changes the store behind every client's back, as nothing of the device does.
void WriteAroundTheClients(const std::string& path, const std::string& sql)
{
    sqlite3* db = nullptr;
    ASSERT_EQ(SQLITE_OK, sqlite3_open(path.c_str(), &db));
    EXPECT_EQ(SQLITE_OK, sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr)) << sqlite3_errmsg(db);
    sqlite3_close(db);
}

TEST_F(PardbStore, ReadsAreKeptUntilAClientWritesOrTheCacheIsFlushed)
{
    cPardbLib reader(PARDB_CLIENT_ID_WEB);
    cPardbLib writer(PARDB_CLIENT_ID_DEFAULT);
    std::string value;
    ASSERT_EQ(0, writer.setPar("net/lan_dns1", std::string("8.8.8.8")));
    ASSERT_EQ(0, reader.getPar("net/lan_dns1", value));
    ASSERT_NE(0, reader.getPar("net/lan_dns2", value));

    WriteAroundTheClients(reader.path(), "UPDATE params SET value = '1.1.1.1' WHERE key = 'net/lan_dns1';"
                                         "INSERT INTO params (key, type, value) VALUES ('net/lan_dns2', 2, 'x')");
    ASSERT_EQ(0, reader.getPar("net/lan_dns1", value));
    EXPECT_EQ("8.8.8.8", value) << "a repeated read is answered from the cache";
    EXPECT_NE(0, reader.getPar("net/lan_dns2", value)) << "a missing key is remembered as missing";
    EXPECT_EQ("no parameter net/lan_dns2", reader.lastError());

    reader.FlushReadCache();
    ASSERT_EQ(0, reader.getPar("net/lan_dns1", value));
    EXPECT_EQ("1.1.1.1", value);

    WriteAroundTheClients(reader.path(), "UPDATE params SET value = '2.2.2.2' WHERE key = 'net/lan_dns1'");
    ASSERT_EQ(0, writer.setPar("unrelated/key", 1));
    ASSERT_EQ(0, reader.getPar("net/lan_dns1", value));
    EXPECT_EQ("2.2.2.2", value) << "any client's write makes every client read again";
    ASSERT_EQ(0, reader.getPar("net/lan_dns2", value));
    EXPECT_EQ("x", value);
}

TEST_F(PardbStore, ADeletionIsSeenByTheOtherClients)
{
    cPardbLib reader(PARDB_CLIENT_ID_WEB);
    cPardbLib writer(PARDB_CLIENT_ID_DEFAULT);
    std::string value;
    ASSERT_EQ(0, writer.setPar("net/portfwd/tcp/00080/d_ip", std::string("10.0.0.2")));
    ASSERT_EQ(0, reader.getPar("net/portfwd/tcp/00080/d_ip", value));
    ASSERT_EQ(0, writer.delPar("net/portfwd/tcp"));
    EXPECT_NE(0, reader.getPar("net/portfwd/tcp/00080/d_ip", value));
}

TEST_F(PardbStore, OneClientCalledFromManyThreadsWithoutALockLosesNothing)
{
    // The cellular form reads through the client without the wrapper's lock.
    cPardbLib store(PARDB_CLIENT_ID_WEB);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&store, t] {
            for (int i = 0; i < 50; ++i) {
                const std::string key = "mix/" + std::to_string(t) + "/" + std::to_string(i);
                EXPECT_EQ(0, store.setPar(key.c_str(), i));
                char value[PARDB_MAX_VALUE];
                EXPECT_EQ(0, store.getPar(key.c_str(), value));
                EXPECT_EQ(std::to_string(i), value);
                std::string other;
                store.getPar("mix/0/0", other);
            }
        });
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(200u, Pardb::GetList("mix").size());
}

TEST_F(PardbStore, TheSharedClientFollowsTheDeviceRoot)
{
    ASSERT_TRUE(Pardb::Set("net/hostname", std::string("first-router")));
    TempDir other;
    Poco::File(other / "var/lib/pardb").createDirectories();
    panelkit::util::SetDeviceRoot(other.path());
    EXPECT_FALSE(Pardb::Exists("net/hostname")) << "the other device's store starts empty";
    ASSERT_TRUE(Pardb::Set("net/hostname", std::string("second-router")));
    EXPECT_EQ(other.path() + "/var/lib/pardb/store.db", Pardb::lib().path());
    panelkit::util::SetDeviceRoot(root_.path());
    EXPECT_EQ("first-router", Pardb::GetString("net/hostname"));
    EXPECT_EQ(root_.path() + "/var/lib/pardb/store.db", Pardb::lib().path());
}

TEST_F(PardbStore, ARefusedKeyIsNeitherWrittenNorDeleted)
{
    ASSERT_TRUE(Pardb::Set("net/lan_dns1", std::string("8.8.8.8")));
    cPardbLib tool(PARDB_CLIENT_ID_DEFAULT);
    ASSERT_EQ(0, tool.refusePar("net/lan_dns1"));
    const std::string log = StderrOf([] { EXPECT_FALSE(Pardb::Set("net/lan_dns1", std::string("1.1.1.1"))); });
    EXPECT_EQ(1, Lines(log, "panelkit, error: FAIL pardblib::setPar \"net/lan_dns1\"")) << log;
    EXPECT_FALSE(Pardb::Set("net/lan_dns1", 7));
    EXPECT_FALSE(Pardb::Delete("net/lan_dns1"));
    EXPECT_FALSE(Pardb::Delete("net")) << "deleting the folder would take the refused key with it";
    root_.write("upload.txt", "x");
    EXPECT_FALSE(Pardb::AddFile("net/lan_dns1", root_ / "upload.txt", 0644));
    EXPECT_NE(0, tool.setPar("net/lan_dns1", std::string("9.9.9.9")));
    EXPECT_EQ("the store refuses to write net/lan_dns1", tool.lastError());

    cPardbLib fresh(PARDB_CLIENT_ID_DEFAULT);
    std::string value;
    PARDB_PAR_T type = PARDB_PAR_UNKNOWN;
    ASSERT_EQ(0, fresh.getPar("net/lan_dns1", value, &type));
    EXPECT_EQ("8.8.8.8", value) << "nothing was written";
    EXPECT_EQ(PARDB_PAR_STRING, type);
}

TEST_F(PardbStore, OtherKeysStillWorkBesideARefusedOne)
{
    cPardbLib tool(PARDB_CLIENT_ID_DEFAULT);
    ASSERT_EQ(0, tool.refusePar("/net/lan_dns1"));
    EXPECT_FALSE(Pardb::Set("net/lan_dns1", std::string("1.1.1.1")));
    EXPECT_FALSE(Pardb::Exists("net/lan_dns1"));
    EXPECT_TRUE(Pardb::Set("net/lan_dns2", std::string("1.0.0.1")));
    EXPECT_TRUE(Pardb::Set("net/lan_dns1x", std::string("beside")));
    EXPECT_TRUE(Pardb::Set("net/lan_dns1/below", std::string("below")));
    EXPECT_EQ("1.0.0.1", Pardb::GetString("net/lan_dns2"));
    EXPECT_TRUE(Pardb::Delete("net/lan_dns2"));
    EXPECT_TRUE(Pardb::Delete("net/lan_dns1/below"));
    EXPECT_EQ(std::vector<std::string>{"net/lan_dns1x"}, Pardb::GetList("net"));
}

// The client is created once per process, so these two open their own connection.
TEST(PardbMissingStore, AnUninitialisedDeviceFailsEveryCallWithAClearMessage)
{
    TempDir root;
    panelkit::util::SetDeviceRoot(root.path());
    testing::internal::CaptureStderr();
    cPardbLib store(PARDB_CLIENT_ID_WEB);
    std::string value;
    EXPECT_NE(0, store.getPar("net/lan_ipaddr", value));
    EXPECT_NE(0, store.setPar("net/lan_ipaddr", std::string("10.0.0.1")));
    EXPECT_NE(0, store.getList("", 0));
    const std::string log = testing::internal::GetCapturedStderr();
    EXPECT_NE(std::string::npos, log.find("no parameter store at " + root.path() + "/var/lib/pardb/store.db")) << log;
    EXPECT_EQ(log.find("no parameter store"), log.rfind("no parameter store")) << "reported once: " << log;
    EXPECT_FALSE(root.exists("var"));
}

TEST(PardbCorruptStore, ACorruptFileFailsEveryCallWithTheDatabaseError)
{
    TempDir root;
    root.write("var/lib/pardb/store.db", std::string(4096, 'x'));
    panelkit::util::SetDeviceRoot(root.path());
    testing::internal::CaptureStderr();
    cPardbLib store(PARDB_CLIENT_ID_WEB);
    int value = 7;
    EXPECT_NE(0, store.getPar("net/lan_advertise_speed", &value));
    EXPECT_EQ(7, value);
    EXPECT_NE(0, store.setPar("net/lan_advertise_speed", 15));
    const std::string log = testing::internal::GetCapturedStderr();
    EXPECT_NE(std::string::npos, log.find("cannot open the parameter store")) << log;
    EXPECT_NE(std::string::npos, log.find("not a database")) << log;
    EXPECT_EQ(std::string(4096, 'x'), root.read("var/lib/pardb/store.db")) << "a corrupt store is left as it was";
}

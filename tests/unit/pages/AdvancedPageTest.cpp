// The Advanced page: remote access switches, passwords, erasing, the configuration listing and its restore,
// and the log downloads, on a simulated device.
#include "Digests.h"
#include "PageFixture.h"

#include "pages/Advanced.h"
#include "util/Pardb.h"

#include <crypt.h>
#include <Poco/File.h>

#include <cstdlib>
#include <regex>
#include <sstream>
#include <sys/statfs.h>

using namespace panelkit;
using namespace panelkit::test;

namespace {

const char kAdvanced[] = "/config/settings/advanced";
const char kSaved[] = "Success: The form values were saved.";
const char kInvalid[] = "Invalid values: The form values were not saved.";
const char kNatSetup[] = "/etc/nat_setup.sh web_advanced\n";

// The administration form as the seeded device shows it: web access and ping on, the rest off.
Fields Administration(const Fields& changes = {})
{
    Fields fields = {{"remoteWebEnabled", "y"}, {"remoteIcmpEnabled", "y"}};
    fields.insert(fields.end(), changes.begin(), changes.end());
    fields.emplace_back("submit", "Save");
    return fields;
}

// True when crypt(3) gives the hash again for the password: the hash is the password's.
bool Verifies(const std::string& password, const std::string& hash)
{
    crypt_data state{};
    const char* again = ::crypt_r(password.c_str(), hash.c_str(), &state);
    return again && hash == again;
}

class AdvancedPage : public PageFixture {
protected:
    AdvancedPage() { ::setenv("APPLICATION_DIR", DevicePath("/opt/application").c_str(), 1); }
    ~AdvancedPage() override { ::unsetenv("APPLICATION_DIR"); }

    PageReply Erase(const std::string& type)
    {
        return PostMultipart(kAdvanced, {{"eraseType", type}, {"submit", "Erase"}}, {});
    }
    PageReply ErasePartition(const std::string& which)
    {
        return PostMultipart(kAdvanced, {{"eraseWhich", which}, {"submit", "ErasePartition"}}, {});
    }
    PageReply Restore(const std::string& listing)
    {
        return PostMultipart(kAdvanced, {{"submit", "Restore Configuration"}}, {{"configFile", "Config.txt", "text/plain", listing}});
    }
    PageReply Password(const std::string& prefix, const std::string& password, const std::string& confirm,
                       const std::string& submit)
    {
        return Post(kAdvanced,
                    {{prefix + "_password", password}, {prefix + "_passwordConfirm", confirm}, {"submit", submit}});
    }
    // The keys the application reset deletes, each with a value below it.
    void StoreApplicationKeys()
    {
        for (const char* key :
             {"deployment/app", "components/1", "component_types/1", "connections/1", "peers/1", "can/1"})
            StoreSet(key, "x");
    }
    // The lines the device's chpasswd received.
    std::string ChpasswdLog() const
    {
        const char log[] = "device/var/lib/sim/chpasswd.log";
        return root_.exists(log) ? root_.read(log) : "";
    }
};

}  // namespace

// The page and its tabs.

TEST_F(AdvancedPage, TheButtonsThatCannotBeUndoneAskFirst)
{
    const std::string page = Get(kAdvanced).body;
    for (const char* question : {"Erase the chosen persistent configuration? It cannot be brought back.",
                                 "Erase everything on the chosen partition? It cannot be brought back.",
                                 "Replace the device&#39;s settings with those of the chosen backup?"})
        EXPECT_TRUE(Has(page, std::string("data-confirm=\"") + question + "\"")) << question;
}

TEST_F(AdvancedPage, ShowsItsFiveTabsWithTheirFormsAndTheSwitchesAsStored)
{
    const auto reply = Get(kAdvanced);
    EXPECT_EQ(200, reply.status);
    EXPECT_TRUE(Has(reply.body, ">Advanced Configuration Options</h2>"));
    for (const char* tab : {"<a href=\"#advanced_administration_tab\">Administration</a>",
                            "<a href=\"#advanced_password_tab\">Passwords</a>",
                            "<a href=\"#advanced_configuration_tab\">Configuration</a>",
                            "<a href=\"#advanced_syslog_tab\">System Log</a>",
                            "<a href=\"#advanced_deployer_tab\">Deployer</a>",
                            "<div id=\"advanced_deployer_tab\" class=\"tabdiv\"><div id=\"advanced_deployerlog\">",
                            "<div id=\"advanced_administration\"><form method=\"post\" action=\"\"><table",
                            "<div id=\"advanced_password\"><form method=\"post\" action=\"\"><table",
                            "<div id=\"advanced_configuration\"><form method=\"post\" action=\"\" enctype=\"multipart/form-data\">",
                            "<div id=\"advanced_syslog\"><form method=\"post\" action=\"\" enctype=\"multipart/form-data\">"})
        EXPECT_TRUE(Has(reply.body, tab)) << tab;
    EXPECT_TRUE(Has(reply.body, "id=\"cfg_adv_remote_web\" name=\"remoteWebEnabled\" value=\"y\" checked=\"checked\""));
    EXPECT_TRUE(Has(reply.body, "id=\"cfg_adv_remote_ssh\" name=\"remoteSshEnabled\" value=\"y\" />"));
    EXPECT_TRUE(Has(reply.body, "id=\"cfg_adv_gsm_debug\" name=\"gsmDebug\" value=\"y\" />"));
    EXPECT_TRUE(Has(reply.body, "<input type=\"password\" id=\"cfg_adv_passwd_cnfm_root\" name=\"root_passwordConfirm\" />"));
    EXPECT_TRUE(Has(reply.body, "<input type=\"radio\" id=\"cfg_adv_erase_type_1\" name=\"eraseType\" value=\"erase_all\" /> "
                                "All (requires reboot)</label>"));
    EXPECT_TRUE(Has(reply.body, "<h3>Recent Log Entries</h3><div class=\"command_output\" id=\"advanced_syslog_dynamic\"><img"));
    EXPECT_TRUE(Has(reply.body, "\"method\":\"tail_syslog\""));
    EXPECT_TRUE(Has(reply.body, "\"failure\":\"Error retrieving log: \""));
    // One form token per form element, the password tab's two parts sharing theirs.
    const std::regex token("name=\"_csrf\"");
    EXPECT_EQ(5, std::distance(std::sregex_iterator(reply.body.begin(), reply.body.end(), token), std::sregex_iterator()));
}

TEST_F(AdvancedPage, TheCellularDebugBoxIsTickedFromOneUp)
{
    StoreSet("debug/seriald", "1");
    EXPECT_TRUE(Has(Get(kAdvanced).body, "name=\"gsmDebug\" value=\"y\" checked=\"checked\""));
}

TEST_F(AdvancedPage, TheRecentLogEntriesAreTheLastLinesOfTheLogInUse)
{
    WriteDeviceFile("/var/log/messages", "volatile line\n");
    WriteDeviceFile("/home/root/log/messages", "persistent line\n");
    EXPECT_EQ("volatile line\n", Call("tail_syslog")["tail"].asString());
    StoreSet("syslogd/persistent", "yes");
    EXPECT_EQ("persistent line\n", Call("tail_syslog")["tail"].asString());
}

TEST_F(AdvancedPage, APostOpensTheTabOfItsForm)
{
    const auto reply = Password("root", "abc", "abc", "Save Root Password");
    EXPECT_TRUE(Has(reply.body, "\"tabs\":{\"selected\":1}")) << reply.body;
    EXPECT_TRUE(Has(Erase("erase_bogus").body, "\"tabs\":{\"selected\":2}"));
}

TEST_F(AdvancedPage, AnUnknownSubmitRunsNothing)
{
    const auto reply = Post(kAdvanced, {{"submit", "Format everything"}});
    EXPECT_EQ(200, reply.status);
    EXPECT_FALSE(Has(reply.body, "form_result_msg"));
    EXPECT_EQ("", CommandLog());
}

// Administration.

TEST_F(AdvancedPage, SavingWithoutAChangeWritesNothingAndRunsNothing)
{
    for (const char* key : {"system/remote/ssh_enabled", "system/remote/web_enabled", "system/remote/icmp_enabled",
                            "syslogd/persistent", "debug/seriald"})
        StoreRefuse(key);
    const auto reply = Post(kAdvanced, Administration());
    EXPECT_TRUE(Has(reply.body, kSaved)) << reply.body;
    EXPECT_EQ("", CommandLog());
    EXPECT_FALSE(RebootMarked());
}

TEST_F(AdvancedPage, ARemoteSwitchIsWrittenAndAppliedWithoutAReboot)
{
    const auto reply = Post(kAdvanced, {{"remoteSshEnabled", "y"}, {"remoteIcmpEnabled", "y"}, {"submit", "Save"}});
    EXPECT_TRUE(Has(reply.body, kSaved)) << reply.body;
    EXPECT_EQ("yes", StoreGet("system/remote/ssh_enabled"));
    EXPECT_EQ("no", StoreGet("system/remote/web_enabled"));
    EXPECT_EQ("yes", StoreGet("system/remote/icmp_enabled"));
    EXPECT_EQ(kNatSetup, CommandLog());
    EXPECT_FALSE(RebootMarked());
    EXPECT_TRUE(Has(reply.body, "name=\"remoteSshEnabled\" value=\"y\" checked=\"checked\""));
}

TEST_F(AdvancedPage, ThePersistentLogAsksForARebootAndAppliesNothing)
{
    const auto reply = Post(kAdvanced, Administration({{"persistentSysLog", "y"}}));
    EXPECT_TRUE(Has(reply.body, kSaved)) << reply.body;
    EXPECT_EQ("yes", StoreGet("syslogd/persistent"));
    EXPECT_TRUE(RebootMarked());
    EXPECT_TRUE(Has(reply.body, "id=\"alertsBox\""));
    EXPECT_EQ("", CommandLog());
}

TEST_F(AdvancedPage, TheCellularDebugLogIsStoredAsFiveOrZero)
{
    Post(kAdvanced, Administration({{"gsmDebug", "y"}}));
    std::string value;
    PARDB_PAR_T type{};
    ASSERT_TRUE(util::Pardb::Get("debug/seriald", value, type));
    EXPECT_EQ("5", value);
    EXPECT_EQ(0, static_cast<int>(type)) << "an int";
    Post(kAdvanced, Administration());
    EXPECT_EQ("0", StoreGet("debug/seriald"));
    EXPECT_EQ("", CommandLog());
}

TEST_F(AdvancedPage, AFailedWriteStopsTheSaveBeforeTheNextSwitchAndAppliesNothing)
{
    StoreRefuse("system/remote/web_enabled");
    const auto reply = Post(kAdvanced, {{"remoteSshEnabled", "y"}, {"persistentSysLog", "y"}, {"submit", "Save"}});
    EXPECT_TRUE(Has(reply.body, "Save error: The form values were not saved.")) << reply.body;
    EXPECT_EQ("yes", StoreGet("system/remote/ssh_enabled"));
    EXPECT_EQ("yes", StoreGet("system/remote/web_enabled"));
    EXPECT_EQ("yes", StoreGet("system/remote/icmp_enabled"));
    EXPECT_EQ("no", StoreGet("syslogd/persistent"));
    EXPECT_EQ("", CommandLog());
    EXPECT_FALSE(RebootMarked());
}

// Passwords.

TEST_F(AdvancedPage, TheWebPasswordIsStoredAsItsDigestAndApplied)
{
    const auto reply = Password("web", "secret", "secret", "Save Web Password");
    EXPECT_TRUE(Has(reply.body, kSaved)) << reply.body;
    EXPECT_EQ("06e037fbcd56fe3835f09eeb5d57b2f1", StoreGet("webman/digest/admin"));
    EXPECT_EQ(std::string("/usr/sbin/lighttpd_set_passwd.sh\n") + kNatSetup, CommandLog());
    EXPECT_FALSE(Has(reply.body, "secret"));
}

TEST_F(AdvancedPage, DifferingWebPasswordsAreBothMarkedAndNothingIsStored)
{
    const auto reply = Password("web", "secret", "secreT", "Save Web Password");
    EXPECT_TRUE(Has(reply.body, kInvalid)) << reply.body;
    EXPECT_TRUE(Has(reply.body, "id=\"cfg_adv_passwd_web\" name=\"web_password\" class='cppcms_error_msg' />"
                                "<span class=\"cppcms_error_msg\">Passwords do not match</span>"));
    EXPECT_TRUE(Has(reply.body, "id=\"cfg_adv_passwd_cnfm_web\" name=\"web_passwordConfirm\" class='cppcms_error_msg' />"
                                "<span class=\"cppcms_error_msg\">Passwords do not match</span>"));
    EXPECT_EQ("<missing>", StoreGet("webman/digest/admin"));
    EXPECT_EQ("", CommandLog());
}

TEST_F(AdvancedPage, ARootPasswordOfOneToFourCharactersIsRefused)
{
    for (const std::string& password : std::vector<std::string>{"", "a", "abcd", "\xC3\xA4\xC3\xB6\xC3\xBC\xC3\x9F"}) {
        const auto reply = Password("root", password, password, "Save Root Password");
        EXPECT_TRUE(Has(reply.body, "<span class=\"cppcms_error_msg\">Invalid length; minimum 5</span>")) << password;
        EXPECT_TRUE(Has(reply.body, kInvalid)) << password;
    }
    EXPECT_EQ("<missing>", StoreGet("system/digest/root"));
    EXPECT_EQ("", CommandLog());
    EXPECT_EQ("", ChpasswdLog());
}

TEST_F(AdvancedPage, DifferingRootPasswordsAreRefused)
{
    const auto reply = Password("root", "secret1", "secret2", "Save Root Password");
    EXPECT_TRUE(Has(reply.body, "<span class=\"cppcms_error_msg\">Passwords do not match</span>")) << reply.body;
    EXPECT_EQ("<missing>", StoreGet("system/digest/root"));
    EXPECT_EQ("", CommandLog());
}

TEST_F(AdvancedPage, TheRootPasswordIsHashedWithSha512AndHandedToChpasswd)
{
    const auto reply = Password("root", "secret1", "secret1", "Save Root Password");
    EXPECT_TRUE(Has(reply.body, kSaved)) << reply.body;
    const std::string hash = StoreGet("system/digest/root");
    EXPECT_TRUE(std::regex_match(hash, std::regex(R"(\$6\$[./0-9A-Za-z]{16}\$[./0-9A-Za-z]{86})"))) << hash;
    EXPECT_TRUE(Verifies("secret1", hash));
    EXPECT_FALSE(Verifies("secret2", hash));
    EXPECT_EQ("root:" + hash + "\n", ChpasswdLog());
    EXPECT_EQ(std::string("/usr/sbin/chpasswd --encrypted\n") + kNatSetup, CommandLog());
}

TEST_F(AdvancedPage, EveryRootPasswordGetsAFreshSalt)
{
    Password("root", "secret1", "secret1", "Save Root Password");
    const std::string first = StoreGet("system/digest/root");
    Password("root", "secret1", "secret1", "Save Root Password");
    EXPECT_NE(first.substr(0, 20), StoreGet("system/digest/root").substr(0, 20));
}

TEST_F(AdvancedPage, HostilePasswordsAreSetAndRunNothingElse)
{
    const std::string marker = root_ / "x";
    for (const std::string& password :
         {"$(touch " + marker + ")", "`touch " + marker + "`", "a; touch " + marker + ";", "it's'; touch " + marker,
          "say \"$(touch " + marker + ")\"", "line1\ntouch " + marker + "\nline3"}) {
        Poco::File(DevicePath("/var/log/sim-commands.log")).setSize(0);
        Poco::File(DevicePath("/var/lib/sim")).createDirectories();
        WriteDeviceFile("/var/lib/sim/chpasswd.log", "");

        EXPECT_TRUE(Has(Password("web", password, password, "Save Web Password").body, kSaved)) << password;
        EXPECT_EQ(Md5Hex("admin:Halvor Configuration Tool:" + password), StoreGet("webman/digest/admin")) << password;
        EXPECT_TRUE(Has(Password("root", password, password, "Save Root Password").body, kSaved)) << password;
        const std::string hash = StoreGet("system/digest/root");
        EXPECT_TRUE(Verifies(password, hash)) << password;
        EXPECT_EQ("root:" + hash + "\n", ChpasswdLog()) << password;
        EXPECT_EQ(std::string("/usr/sbin/lighttpd_set_passwd.sh\n") + kNatSetup + "/usr/sbin/chpasswd --encrypted\n" +
                      kNatSetup,
                  CommandLog())
            << password;
        EXPECT_FALSE(root_.exists("x")) << password;
    }
}

// Erasing.

TEST_F(AdvancedPage, TheApplicationResetStopsTheDeployerDeletesItsKeysAndStartsItAgain)
{
    StoreApplicationKeys();
    const auto reply = Erase("erase_sensors");
    EXPECT_TRUE(Has(reply.body, kSaved)) << reply.body;
    EXPECT_EQ("/opt/application/etc/rcS.d/deployer stop\n"
              "/usr/bin/pardb del /deployment\n/usr/bin/pardb del /components\n/usr/bin/pardb del /component_types\n"
              "/usr/bin/pardb del /connections\n/usr/bin/pardb del /peers\n/usr/bin/pardb del /can\n"
              "/opt/application/etc/rcS.d/deployer start\n",
              CommandLog());
    EXPECT_EQ("<missing>", StoreGet("deployment/app"));
    EXPECT_EQ("<missing>", StoreGet("can/1"));
    EXPECT_EQ("fieldrouter", StoreGet("net/hostname"));
    EXPECT_FALSE(RebootMarked());
}

TEST_F(AdvancedPage, TheApplicationResetOfAFreshDeviceCanBeRepeated)
{
    EXPECT_EQ("14", StoreGet("deployment/revision"));
    EXPECT_TRUE(Has(Erase("erase_sensors").body, kSaved));
    EXPECT_EQ("<missing>", StoreGet("deployment/revision"));
    EXPECT_EQ("1", StoreGet("deployment/version")) << "written again by the starting deployer";
    EXPECT_TRUE(Has(Erase("erase_sensors").body, kSaved));
}

TEST_F(AdvancedPage, AFailedStepOfTheApplicationResetIsReportedAfterTheDeployerIsStartedAgain)
{
    StoreApplicationKeys();
    StoreRefuse("peers/1");
    const auto reply = Erase("erase_sensors");
    EXPECT_TRUE(Has(reply.body, "<div class=\"failure form_result_msg\">Error: Failure erasing persistent storage</div>"))
        << reply.body;
    EXPECT_TRUE(Has(CommandLog(), "/usr/bin/pardb del /can\n/opt/application/etc/rcS.d/deployer start\n"));
    EXPECT_EQ("<missing>", StoreGet("can/1"));
    EXPECT_FALSE(RebootMarked());
}

TEST_F(AdvancedPage, ErasingAllMovesTheServersDumpsAwayAndRemovesThemForTheReboot)
{
    WriteDeviceFile("/home/root/config/dump.rdb", "dump");
    WriteDeviceFile("/home/root/config/rdb", "dump");
    WriteDeviceFile("/home/root/config/.hidden.rdb", "kept");
    WriteDeviceFile("/home/root/config/appendonly.aof", "kept");
    const auto reply = Erase("erase_all");
    EXPECT_TRUE(Has(reply.body, kSaved)) << reply.body;
    EXPECT_EQ("/usr/bin/nc localhost 6379\n/usr/bin/nc < CONFIG SET dir \"/var/volatile/tmp\"\n"
              "/usr/bin/nc localhost 6379\n/usr/bin/nc < quit\n",
              CommandLog());
    EXPECT_FALSE(root_.exists("device/home/root/config/dump.rdb"));
    EXPECT_FALSE(root_.exists("device/home/root/config/rdb"));
    EXPECT_TRUE(root_.exists("device/home/root/config/.hidden.rdb"));
    EXPECT_TRUE(root_.exists("device/home/root/config/appendonly.aof"));
    EXPECT_TRUE(RebootMarked());
}

TEST_F(AdvancedPage, ErasingAllGoesOnWhenADumpCannotBeRemoved)
{
    WriteDeviceFile("/home/root/config/stuck.rdb/inside", "a folder cannot be unlinked");
    const auto reply = Erase("erase_all");
    EXPECT_TRUE(Has(reply.body, kSaved)) << reply.body;
    EXPECT_TRUE(RebootMarked());
}

TEST_F(AdvancedPage, AnEraseWithoutAChoiceOrWithAnUnknownOneRunsNothing)
{
    for (const auto& reply : {PostMultipart(kAdvanced, {{"submit", "Erase"}}, {}), Erase("erase_bogus"),
                              PostMultipart(kAdvanced, {{"submit", "ErasePartition"}}, {}), ErasePartition("erase_root")})
        EXPECT_TRUE(Has(reply.body, kInvalid)) << reply.body;
    EXPECT_EQ("", CommandLog());
    EXPECT_FALSE(RebootMarked());
}

TEST_F(AdvancedPage, ErasingAPartitionAsksForAReboot)
{
    auto reply = ErasePartition("erase_log");
    EXPECT_TRUE(Has(reply.body, "<div class=\"success form_result_msg\">Success: The log partition was erased. Reboot now.</div>"))
        << reply.body;
    EXPECT_TRUE(RebootMarked());
    reply = ErasePartition("erase_data");
    EXPECT_TRUE(Has(reply.body, "Success: The data partition was erased. Reboot now.")) << reply.body;
    EXPECT_EQ("/etc/erase/erase-partition log\n/etc/erase/erase-partition data\n", CommandLog());
}

TEST_F(AdvancedPage, AFailedPartitionEraseSaysWhichAndAsksForNoReboot)
{
    WriteDeviceFile("/etc/sim/erase-fail", "");
    EXPECT_TRUE(Has(ErasePartition("erase_log").body, "<div class=\"failure form_result_msg\">Error: Failure erasing log partition.</div>"));
    EXPECT_TRUE(Has(ErasePartition("erase_data").body, "Error: Failure erasing data partition."));
    EXPECT_FALSE(RebootMarked());
}

// The partitions.

TEST(PartitionUsage, FreeGigabytesInSinglePrecisionAndWholePercentsUsed)
{
    EXPECT_EQ("Log Partition (1.0GB free, 75% used)", pages::PartitionUsage("Log Partition", 1000000, 250000, 4096));
    EXPECT_EQ("Data Partition (0.0GB free, 100% used)", pages::PartitionUsage("Data Partition", 5000, 0, 1024));
    // Blocks smaller than a kilobyte count as none.
    EXPECT_EQ("Data Partition (0.0GB free, 50% used)", pages::PartitionUsage("Data Partition", 100, 50, 512));
    EXPECT_EQ("Log Partition (7.2GB free, 3% used)", pages::PartitionUsage("Log Partition", 1953125, 1890000, 4096));
    EXPECT_EQ("unknown", pages::PartitionUsage("Log Partition", 0, 0, 4096));
}

TEST_F(AdvancedPage, ThePartitionChoicesShowTheirFileSystemsUse)
{
    struct statfs log {};
    ASSERT_EQ(0, ::statfs(DevicePath("/home/root/log").c_str(), &log));
    const std::string line = pages::PartitionUsage("Log Partition", log.f_blocks, log.f_bfree, log.f_bsize);
    ASSERT_TRUE(std::regex_match(line, std::regex(R"(Log Partition \(\d+\.\dGB free, \d+% used\))"))) << line;
    const auto reply = Get(kAdvanced);
    EXPECT_TRUE(Has(reply.body, "name=\"eraseWhich\" value=\"erase_log\" /> " + line + "</label>")) << reply.body;
    EXPECT_TRUE(Has(reply.body, "name=\"eraseWhich\" value=\"erase_data\" /> Data Partition (")) << reply.body;
    EXPECT_FALSE(Has(reply.body, "form_result_msg"));
}

TEST_F(AdvancedPage, AMissingPartitionIsUnknownAndSaidOnEveryPageUntilAPostSaysMore)
{
    Poco::File(DevicePath("/home/root/data")).remove(true);
    EXPECT_EQ("unknown", pages::PartitionLine("Data Partition", DevicePath("/home/root/data")));
    const auto reply = Get(kAdvanced);
    EXPECT_TRUE(Has(reply.body, "<div class=\"failure static form_result_msg\">Unknown data partition information</div>"))
        << reply.body;
    EXPECT_TRUE(Has(reply.body, "value=\"erase_data\" /> Data Partition (unknown)</label>"));
    EXPECT_TRUE(Has(Post(kAdvanced, Administration()).body, kSaved));
    EXPECT_TRUE(Has(Post(kAdvanced, {{"submit", "Nothing known"}}).body, "Unknown data partition information"));
}

// The configuration listing and its restore.

TEST_F(AdvancedPage, TheBackupListsEveryKeySortedWithItsTypeLetter)
{
    ASSERT_TRUE(util::Pardb::Set("zz/count", 42));
    ASSERT_TRUE(util::Pardb::Set("zz/ratio", 1.5f));
    StoreSet("zz/quoted", "say \"hi\", then go");
    const auto reply = PostMultipart(kAdvanced, {{"submit", "Backup Configuration"}}, {});
    EXPECT_EQ(200, reply.status);
    EXPECT_EQ("text/plain", reply.contentType);
    EXPECT_EQ("attachment; filename=\"Config_A123456789.txt\"", reply.header("Content-disposition"));
    EXPECT_TRUE(Has(reply.body, "\"net/hostname\",\"fieldrouter\", s\n")) << reply.body;
    EXPECT_TRUE(Has(reply.body, "\"zz/count\",\"42\", i\n\"zz/quoted\",\"say \"hi\", then go\", s\n\"zz/ratio\",\"1.5\", f\n"))
        << reply.body;
    std::vector<std::string> keys;
    std::istringstream lines(reply.body);
    for (std::string line; std::getline(lines, line);)
        keys.push_back(line.substr(1, line.find('"', 1) - 1));
    EXPECT_EQ(util::Pardb::GetList(""), keys);
}

TEST_F(AdvancedPage, ARestoreWritesOnlyTheKeysThatDifferAndAsksForAReboot)
{
    StoreRefuse("net/lan_dns1");  // unchanged, so never written
    const auto reply = Restore("\"net/hostname\",\"excavator-7\", s\n"
                               "\"net/lan_dns1\",\"8.8.8.8\", s\n"
                               "\"zz/banner\",\"say \"hi\", then go\", s\n"
                               "\"zz/count\",\"7\", i\n");
    EXPECT_TRUE(Has(reply.body, "<div class=\"success form_result_msg\">Configuration restored: 3 keys changed. "
                                "Reboot to take effect</div>"))
        << reply.body;
    EXPECT_EQ("excavator-7", StoreGet("net/hostname"));
    EXPECT_EQ("say \"hi\", then go", StoreGet("zz/banner"));
    EXPECT_EQ(7, util::Pardb::GetInt("zz/count"));
    EXPECT_TRUE(RebootMarked());
    EXPECT_EQ("", CommandLog());
}

TEST_F(AdvancedPage, TheBackupRestoredAsItIsChangesNothing)
{
    ASSERT_TRUE(util::Pardb::Set("zz/ratio", 0.25f));
    const std::string backup = PostMultipart(kAdvanced, {{"submit", "Backup Configuration"}}, {}).body;
    for (const auto& key : util::Pardb::GetList(""))
        StoreRefuse(key);
    EXPECT_TRUE(Has(Restore(backup).body, "Configuration restored: 0 keys changed. Reboot to take effect"));
}

TEST_F(AdvancedPage, ANumberRestoredAsTextIsWrittenAsItsType)
{
    StoreSet("zz/count", "7");
    EXPECT_TRUE(Has(Restore("\"zz/count\",\"7\", i\n").body, "Configuration restored: 1 keys changed."));
    std::string value;
    PARDB_PAR_T type{};
    ASSERT_TRUE(util::Pardb::Get("zz/count", value, type));
    EXPECT_EQ(0, static_cast<int>(type));
}

TEST_F(AdvancedPage, ABrokenLineIsReportedWithItsNumberAndChangesNothing)
{
    const auto reply = Restore("\"net/hostname\",\"excavator-7\", s\n"
                               "\"net/lan_dns1\",\"1.1.1.1\", s\n"
                               "\"zz/count\",\"seven\", i\n");
    EXPECT_TRUE(Has(reply.body, "<div class=\"failure form_result_msg\">Line 3: the value of zz/count is not a whole number</div>"))
        << reply.body;
    EXPECT_EQ("fieldrouter", StoreGet("net/hostname"));
    EXPECT_EQ("8.8.8.8", StoreGet("net/lan_dns1"));
    EXPECT_FALSE(RebootMarked());
}

TEST_F(AdvancedPage, ARestoreOverOneMebibyteIsRefused)
{
    std::string listing = "\"net/hostname\",\"excavator-7\", s\n";
    while (listing.size() <= (1u << 20))
        listing += "\"zz/filler\",\"" + std::string(1000, 'f') + "\", s\n";
    const auto reply = Restore(listing);
    EXPECT_TRUE(Has(reply.body, kInvalid)) << reply.body.substr(0, 2000);
    EXPECT_TRUE(Has(reply.body, "Invalid file length; minimum 1, maximum 1048576 bytes."));
    EXPECT_EQ("fieldrouter", StoreGet("net/hostname"));
}

TEST_F(AdvancedPage, ARestoreWithoutAFileIsRefused)
{
    const auto reply = PostMultipart(kAdvanced, {{"submit", "Restore Configuration"}}, {});
    EXPECT_TRUE(Has(reply.body, kInvalid)) << reply.body;
    EXPECT_FALSE(RebootMarked());
}

// The logs.

TEST_F(AdvancedPage, TheSystemLogIsDownloadedUnderTheDevicesName)
{
    WriteDeviceFile("/var/log/messages", "volatile 1\nvolatile 2\n");
    WriteDeviceFile("/home/root/log/messages", "persistent 1\n");
    StoreSet("net/hostname", "site\"7");
    auto reply = PostMultipart(kAdvanced, {{"submit", "Download"}}, {});
    EXPECT_EQ("text/plain", reply.contentType);
    EXPECT_EQ("attachment; filename=\"ULM3_syslog_site7.txt\"", reply.header("Content-disposition"));
    EXPECT_EQ("volatile 1\nvolatile 2\n", reply.body);
    EXPECT_EQ(DevicePath("/var/log/messages"), reply.file) << "streamed from the file";
    StoreSet("syslogd/persistent", "yes");
    EXPECT_EQ("persistent 1\n", PostMultipart(kAdvanced, {{"submit", "Download"}}, {}).body);
}

TEST_F(AdvancedPage, TheDeployerLogIsDownloadedByItsNameAndThenDeleted)
{
    WriteDeviceFile("/var/log/messages", "deployer said hello\n");
    const auto reply = PostMultipart(kAdvanced, {{"submit", "Download log"}}, {});
    EXPECT_EQ("text/plain", reply.contentType);
    EXPECT_TRUE(std::regex_match(reply.header("Content-disposition"),
                                 std::regex(R"(attachment; filename="deployer-log-\d{14}\.txt")")))
        << reply.header("Content-disposition");
    EXPECT_EQ("deployer said hello\n", reply.body);
    EXPECT_EQ(0u, reply.file.find(DevicePath("/tmp/deployer-log-")));
    EXPECT_FALSE(Poco::File(reply.file).exists()) << "deleted once sent";
    EXPECT_EQ("/usr/bin/logdeployer\n", CommandLog());
}

TEST_F(AdvancedPage, TheDeployerToolsErrorTextIsShownAsTheMessage)
{
    WriteDeviceFile("/usr/bin/logdeployer", "#!/bin/sh\necho 'logdeployer: the deployer <is> not running'\n", true);
    const auto reply = PostMultipart(kAdvanced, {{"submit", "Download log"}}, {});
    EXPECT_EQ("text/html; charset=utf-8", reply.contentType);
    EXPECT_TRUE(Has(reply.body, "<div class=\"failure form_result_msg\">logdeployer: the deployer &lt;is&gt; not running</div>"))
        << reply.body;
    EXPECT_TRUE(Has(reply.body, "\"tabs\":{\"selected\":4}"));
}

TEST_F(AdvancedPage, ADeployerLogPathThatIsNoFileIsShownAsTheMessage)
{
    WriteDeviceFile("/usr/bin/logdeployer", "#!/bin/sh\necho /tmp\n", true);
    EXPECT_TRUE(Has(PostMultipart(kAdvanced, {{"submit", "Download log"}}, {}).body,
                    "<div class=\"failure form_result_msg\">/tmp</div>"));
    EXPECT_TRUE(root_.exists("device/tmp"));
    WriteDeviceFile("/usr/bin/logdeployer", "#!/bin/sh\necho /tmp/../tmp/kept.txt\n", true);
    WriteDeviceFile("/tmp/kept.txt", "kept");
    EXPECT_TRUE(Has(PostMultipart(kAdvanced, {{"submit", "Download log"}}, {}).body,
                    "<div class=\"failure form_result_msg\">/tmp/../tmp/kept.txt</div>"));
    EXPECT_TRUE(root_.exists("device/tmp/kept.txt")) << "a path that climbs is never sent nor removed";
    WriteDeviceFile("/usr/bin/logdeployer", "#!/bin/sh\nexit 1\n", true);
    EXPECT_TRUE(Has(PostMultipart(kAdvanced, {{"submit", "Download log"}}, {}).body,
                    "Error: The deployer log could not be made"));
}

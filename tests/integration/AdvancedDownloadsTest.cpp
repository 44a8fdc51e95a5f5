// The Advanced page of the real binary on a simulated device: the downloads as a browser receives them, and erasing.
#include "DeviceServerTest.h"
#include "Http.h"
#include "Server.h"

#include <gtest/gtest.h>

#include <Poco/File.h>

#include <chrono>
#include <fstream>
#include <regex>
#include <thread>
#include <unistd.h>

using namespace panelkit::test;

namespace {

const char kAdvanced[] = "/config/settings/advanced";

class AdvancedDownloads : public DeviceServerTest {
protected:
    // Posts the fields as the page's multipart forms send them.
    HttpReply Post(const std::vector<std::pair<std::string, std::string>>& fields)
    {
        return PostForm(server_.port(), kAdvanced, fields, {}, true);
    }

    // The most memory the service has held so far, in KiB.
    long PeakMemory()
    {
        std::ifstream status("/proc/" + std::to_string(server_.process().pid()) + "/status");
        for (std::string line; std::getline(status, line);)
            if (line.rfind("VmHWM:", 0) == 0)
                return std::stol(line.substr(6));
        return -1;
    }

    // Waits up to ten seconds for the file to be removed.
    static bool Gone(const std::string& path)
    {
        for (int waited = 0; waited < 10000; waited += 20) {
            if (!Poco::File(path).exists())
                return true;
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
        return false;
    }
};

}  // namespace

TEST_F(AdvancedDownloads, TheSystemLogIsAPlainTextAttachmentNamedAfterTheDevice)
{
    server_.writeDeviceFile("/var/log/messages", "Nov 23 10:00:01 fieldrouter kernel: one\nNov 23 10:00:02 two\n");
    const HttpReply reply = Post({{"submit", "Download"}});
    EXPECT_EQ(200, reply.status);
    EXPECT_EQ("text/plain", reply.header("Content-Type"));
    EXPECT_EQ("attachment; filename=\"ULM3_syslog_fieldrouter.txt\"", reply.header("Content-disposition"));
    EXPECT_EQ("Nov 23 10:00:01 fieldrouter kernel: one\nNov 23 10:00:02 two\n", reply.body);
}

TEST_F(AdvancedDownloads, AFiftyMebibyteLogIsStreamedNotHeld)
{
    std::string line = "Nov 23 10:00:01 fieldrouter deployer[810]: " + std::string(84, 'x') + "\n";
    {
        std::ofstream log(server_.devicePath("/var/log/messages"), std::ios::binary);
        for (int i = 0; i < 50 * 1024 * 1024 / 128; ++i)
            log << line;
    }
    Get(server_.port(), kAdvanced);
    const long before = PeakMemory();
    ASSERT_GT(before, 0);
    const HttpReply reply = Post({{"submit", "Download"}});
    EXPECT_EQ(50u * 1024 * 1024, reply.body.size());
    EXPECT_EQ(line, reply.body.substr(reply.body.size() - 128));
    EXPECT_LT(PeakMemory() - before, 20 * 1024) << "KiB more at the peak than before the download";
}

TEST_F(AdvancedDownloads, TheDeployerLogIsSentUnderItsOwnNameAndRemoved)
{
    server_.writeDeviceFile("/var/log/messages", "deployer: all applications started\n");
    const HttpReply reply = Post({{"submit", "Download log"}});
    EXPECT_EQ(200, reply.status);
    const std::string disposition = reply.header("Content-disposition");
    std::smatch name;
    ASSERT_TRUE(std::regex_match(disposition, name, std::regex(R"re(attachment; filename="(deployer-log-\d{14}\.txt)")re")))
        << disposition;
    EXPECT_EQ("deployer: all applications started\n", reply.body);
    EXPECT_TRUE(Gone(server_.devicePath("/tmp/" + name[1].str()))) << "removed once sent";
    EXPECT_TRUE(std::regex_search(CommandLog(), std::regex("^/usr/bin/logdeployer$", std::regex::multiline)));
}

TEST_F(AdvancedDownloads, TheConfigurationListingIsNamedAfterTheAssemblyNumber)
{
    ASSERT_TRUE(server_.storeSet("zz/count", "12", "--int"));
    const HttpReply reply = Post({{"submit", "Backup Configuration"}});
    EXPECT_EQ("text/plain", reply.header("Content-Type"));
    EXPECT_EQ("attachment; filename=\"Config_A123456789.txt\"", reply.header("Content-disposition"));
    EXPECT_NE(std::string::npos, reply.body.find("\"net/hostname\",\"fieldrouter\", s\n\"net/")) << reply.body;
    EXPECT_EQ("\"zz/count\",\"12\", i\n", reply.body.substr(reply.body.rfind("\"zz/count\"")));
}

TEST_F(AdvancedDownloads, ErasingTheLogPartitionRunsTheToolAndAsksForAReboot)
{
    const HttpReply reply = Post({{"eraseWhich", "erase_log"}, {"submit", "ErasePartition"}});
    EXPECT_EQ(200, reply.status);
    EXPECT_NE(std::string::npos, reply.body.find(">Success: The log partition was erased. Reboot now.</div>"));
    EXPECT_NE(std::string::npos, CommandLog().find("/etc/erase/erase-partition log\n"));
    EXPECT_TRUE(server_.rebootMarked());
}

TEST_F(AdvancedDownloads, ErasingAllTellsTheKeyValueServerAndAsksForAReboot)
{
    server_.writeDeviceFile("/home/root/config/dump.rdb", "REDIS0009");
    const HttpReply reply = Post({{"eraseType", "erase_all"}, {"submit", "Erase"}});
    EXPECT_NE(std::string::npos, reply.body.find(">Success: The form values were saved.</div>")) << reply.body;
    EXPECT_NE(std::string::npos, CommandLog().find("/usr/bin/nc localhost 6379\n/usr/bin/nc < CONFIG SET dir "
                                                   "\"/var/volatile/tmp\"\n/usr/bin/nc localhost 6379\n/usr/bin/nc < quit\n"));
    EXPECT_FALSE(Poco::File(server_.devicePath("/home/root/config/dump.rdb")).exists());
    EXPECT_TRUE(server_.rebootMarked());
}

TEST_F(AdvancedDownloads, EveryProgramThePageRunsHasAStandIn)
{
    for (const char* program : {"/etc/nat_setup.sh", "/usr/sbin/lighttpd_set_passwd.sh", "/usr/sbin/chpasswd",
                                "/etc/erase/erase-partition", "/usr/bin/logdeployer", "/usr/bin/nc", "/usr/bin/pardb",
                                "/opt/application/etc/rcS.d/deployer"})
        EXPECT_EQ(0, ::access(server_.devicePath(program).c_str(), X_OK)) << program;
}

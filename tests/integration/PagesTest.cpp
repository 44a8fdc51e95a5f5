// The General, Ethernet and DNS pages and their status methods on a simulated device: what a save
// stores, the message it shows, the reboot it marks, and what the status tabs receive.
#include "Http.h"
#include "Server.h"

#include <Poco/File.h>
#include <Poco/URI.h>
#include <gtest/gtest.h>
#include <json/json.h>

using namespace panelkit::test;

namespace {

using Fields = std::vector<std::pair<std::string, std::string>>;

bool Has(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

class Pages : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(server_.simulateDevice());
        ASSERT_TRUE(server_.start()) << server_.log();
    }

    // Posts the fields as a browser submits the page's form, with the token the page handed out.
    HttpReply Post(const std::string& path, const Fields& fields)
    {
        const FormToken form = OpenForm(server_.port(), path);
        std::string body = "_csrf=" + form.token;
        for (const auto& [name, value] : fields) {
            std::string encoded;
            Poco::URI::encode(value, "&=+;", encoded);
            body += "&" + name + "=" + encoded;
        }
        return Http(server_.port(), "POST", path, body, "application/x-www-form-urlencoded", form.headers());
    }

    // The result of a JSON-RPC call without parameters.
    Json::Value Call(const std::string& method)
    {
        const HttpReply reply = Rpc(server_.port(), "/async/rpc", method);
        Json::Value answer;
        std::string errors;
        const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
        EXPECT_TRUE(reader->parse(reply.body.data(), reply.body.data() + reply.body.size(), &answer, &errors))
            << reply.body;
        EXPECT_TRUE(answer["error"].isNull()) << reply.body;
        return answer["result"];
    }

    std::string CommandLog() const { return ReadFile(server_.devicePath("/var/log/sim-commands.log")); }

    Server server_;
};

const char kEthernet[] = "/config/network/ethernet1";
const char kDns[] = "/config/network/dns_server";
const char kGeneral[] = "/config/settings/general";
const char kEthernetSaved[] = "Ethernet 1 settings updated, reboot to take effect";
const char kInvalid[] = "Invalid values: The form values were not saved.";

Fields Ethernet(const std::string& mode, const std::string& ip, const std::string& gateway,
                const std::vector<std::string>& speeds)
{
    Fields fields{{"addressMode", mode}, {"ipAddress", ip}, {"netmask", "255.255.0.0"}, {"gateway", gateway}};
    for (const auto& speed : speeds)
        fields.emplace_back("speedsAvailable", speed);
    fields.emplace_back("saveButton", "Save");
    return fields;
}

}  // namespace

TEST_F(Pages, EthernetInDhcpModeStoresOnlyTheModeAndSpeedsAndShowsTheStoredAddresses)
{
    const HttpReply reply = Post(kEthernet, Ethernet("dhcp", "", "", {"1", "3"}));
    EXPECT_EQ(200, reply.status);
    EXPECT_TRUE(Has(reply.body, kEthernetSaved)) << reply.body;
    EXPECT_EQ("dhcp", server_.storeGet("net/lan_addr_mode"));
    EXPECT_EQ("10", server_.storeGet("net/lan_advertise_speed"));
    EXPECT_EQ("192.168.1.1", server_.storeGet("net/lan_ipaddr"));
    EXPECT_EQ("255.255.255.0", server_.storeGet("net/lan_netmask"));
    EXPECT_EQ("192.168.1.254", server_.storeGet("net/lan_gateway"));
    EXPECT_TRUE(Has(reply.body, "name=\"ipAddress\" value=\"192.168.1.1\""));
    EXPECT_TRUE(Has(reply.body, "name=\"gateway\" value=\"192.168.1.254\""));
    EXPECT_TRUE(Has(reply.body, "<option value=\"255.255.255.0\" selected=\"selected\">"));
    EXPECT_TRUE(Has(reply.body, "<option value=\"dhcp\" selected=\"selected\">DHCP"));
    EXPECT_TRUE(server_.rebootMarked());
    EXPECT_TRUE(Has(reply.body, "id=\"alertsBox\"")) << "the reboot alert shows on the saving response";
}

TEST_F(Pages, EthernetInStaticModeStoresTheAddressesAndKeepsThePostedValues)
{
    const HttpReply reply = Post(kEthernet, Ethernet("static", "10.1.2.3", "10.1.2.1", {"1", "3"}));
    EXPECT_TRUE(Has(reply.body, kEthernetSaved)) << reply.body;
    EXPECT_EQ("static", server_.storeGet("net/lan_addr_mode"));
    EXPECT_EQ("10.1.2.3", server_.storeGet("net/lan_ipaddr"));
    EXPECT_EQ("255.255.0.0", server_.storeGet("net/lan_netmask"));
    EXPECT_EQ("10.1.2.1", server_.storeGet("net/lan_gateway"));
    EXPECT_EQ("10", server_.storeGet("net/lan_advertise_speed"));
    EXPECT_TRUE(Has(reply.body, "name=\"ipAddress\" value=\"10.1.2.3\""));
    EXPECT_TRUE(Has(reply.body, "<option value=\"1\" selected=\"selected\">10Mbs Full duplex"));
    EXPECT_TRUE(Has(reply.body, "<option value=\"3\" selected=\"selected\">100Mbs Full duplex"));
    EXPECT_TRUE(server_.rebootMarked());
}

TEST_F(Pages, EthernetInStaticModeWithoutAGatewayIsRefused)
{
    const HttpReply reply = Post(kEthernet, Ethernet("static", "10.1.2.3", "", {"0"}));
    EXPECT_TRUE(Has(reply.body, kInvalid)) << reply.body;
    EXPECT_TRUE(Has(reply.body, "Invalid IP address"));
    EXPECT_EQ("192.168.1.1", server_.storeGet("net/lan_ipaddr"));
    EXPECT_EQ("static", server_.storeGet("net/lan_addr_mode"));
    EXPECT_EQ("15", server_.storeGet("net/lan_advertise_speed"));
    EXPECT_FALSE(server_.rebootMarked());
}

TEST_F(Pages, EthernetWithoutASpeedIsRefused)
{
    const HttpReply reply = Post(kEthernet, Ethernet("dhcp", "", "", {}));
    EXPECT_TRUE(Has(reply.body, kInvalid)) << reply.body;
    EXPECT_TRUE(Has(reply.body, "At least one speed must be selected"));
    EXPECT_EQ("static", server_.storeGet("net/lan_addr_mode"));
    EXPECT_EQ("15", server_.storeGet("net/lan_advertise_speed"));
    EXPECT_FALSE(server_.rebootMarked());
}

TEST_F(Pages, EthernetShowsTheStoredSpeedMaskAsSelections)
{
    ASSERT_TRUE(server_.storeSet("net/lan_advertise_speed", "5", "--int"));
    const std::string body = Get(server_.port(), kEthernet).body;
    EXPECT_TRUE(Has(body, "<option value=\"0\" selected=\"selected\">10Mbs Half duplex</option>")) << body;
    EXPECT_TRUE(Has(body, "<option value=\"1\">10Mbs Full duplex</option>"));
    EXPECT_TRUE(Has(body, "<option value=\"2\" selected=\"selected\">100Mbs Half duplex</option>"));
    EXPECT_TRUE(Has(body, "<option value=\"3\">100Mbs Full duplex</option>"));
}

TEST_F(Pages, EthernetWithMissingKeysShowsEmptyFieldsAndNoSpeed)
{
    for (const char* key : {"net/lan_addr_mode", "net/lan_ipaddr", "net/lan_netmask", "net/lan_gateway",
                            "net/lan_advertise_speed"})
        ASSERT_EQ(0, Process({PANELKIT_PARDB, "--root", server_.devicePath(""), "del", key},
                             server_.work() / "del.out")
                         .wait(30000));
    const std::string body = Get(server_.port(), kEthernet).body;
    EXPECT_TRUE(Has(body, "name=\"ipAddress\" value=\"\"")) << body;
    EXPECT_FALSE(Has(body, "selected=\"selected\">10Mbs"));
    EXPECT_FALSE(Has(body, "selected=\"selected\">100Mbs"));
}

TEST_F(Pages, EthernetShowsTheDiagnosticsOfTheDevice)
{
    const std::string body = Get(server_.port(), kEthernet).body;
    for (const char* title : {"Network Config", "Routing", "Wireless Config", "Network Status", "DNS Settings",
                              "PPP Status", "DHCP Leases"})
        EXPECT_TRUE(Has(body, std::string("<h3>") + title + "</h3>")) << title;
    EXPECT_TRUE(Has(body, "excavator-7"));
    EXPECT_TRUE(Has(body, "nameserver 8.8.8.8"));
    EXPECT_TRUE(Has(body, "Interface ap0"));
    EXPECT_TRUE(Has(body, "<h3>PPP Status</h3><div class=\"command_output\"><pre>\n    IN   PACK VJCOMP"));
    const std::string commands = CommandLog();
    for (const char* command : {"/sbin/ifconfig\n", "/sbin/route -n", "/usr/sbin/iw dev", "/bin/netstat -an",
                                "/usr/sbin/pppstats\n"})
        EXPECT_TRUE(Has(commands, command)) << command << " in " << commands;
}

TEST_F(Pages, TabbedPagesPostToTheConfiguredStatusUrl)
{
    for (const char* path : {kEthernet, kDns, kGeneral})
        EXPECT_TRUE(Has(Get(server_.port(), path).body, "\"url\":\"/async/rpc\"")) << path;
}

TEST(StatusUrl, FollowsTheAsynchronousRootAndTheRpcName)
{
    Server server;
    server.config()["panelkit"]["root"]["async"] = "status";
    server.config()["panelkit"]["root"]["rpc"] = "json";
    ASSERT_TRUE(server.start()) << server.log();
    for (const char* path : {kEthernet, kDns, kGeneral})
        EXPECT_TRUE(Has(Get(server.port(), path).body, "\"url\":\"/status/json\"")) << path;
    EXPECT_EQ(200, Rpc(server.port(), "/status/json", "dns_server_status").status);
}

TEST_F(Pages, GeneralIsServedAtTheControllerRootAndByName)
{
    for (const char* path : {"/config/settings", "/config/settings/", kGeneral}) {
        const HttpReply reply = Get(server_.port(), path);
        EXPECT_EQ(200, reply.status) << path;
        EXPECT_TRUE(Has(reply.body, ">General Device Configuration</h2>")) << path;
        EXPECT_TRUE(Has(reply.body, "<td class=\"ui-serial-number\"><b>A123456789</b></td>")) << path;
        EXPECT_TRUE(Has(reply.body, "<td class=\"ui-serial-number\"><b>0012-3456-789A</b></td>")) << path;
        EXPECT_TRUE(Has(reply.body, "name=\"deviceName\" value=\"fieldrouter\"")) << path;
        EXPECT_TRUE(Has(reply.body, "<h3>Version Info</h3><div class=\"command_output\"><pre>ULM3 2.4.1")) << path;
        EXPECT_TRUE(Has(reply.body, "<h3>Uname</h3>")) << path;
    }
}

TEST_F(Pages, GeneralAcceptsADeviceNameOf64Characters)
{
    const std::string name(64, 'n');
    const HttpReply reply = Post(kGeneral, {{"deviceName", name}, {"language", ""}, {"saveButton", "Save"}});
    EXPECT_TRUE(Has(reply.body, "Success: The form values were saved.")) << reply.body;
    EXPECT_EQ(name, server_.storeGet("net/hostname"));
    EXPECT_EQ("", server_.storeGet("language"));
    EXPECT_FALSE(server_.rebootMarked());
}

TEST_F(Pages, GeneralRefusesADeviceNameOf65Characters)
{
    const HttpReply reply = Post(kGeneral, {{"deviceName", std::string(65, 'n')}, {"language", ""}});
    EXPECT_TRUE(Has(reply.body, kInvalid)) << reply.body;
    EXPECT_EQ("fieldrouter", server_.storeGet("net/hostname"));
}

TEST_F(Pages, GeneralRefusesAnEmptyDeviceName)
{
    const HttpReply reply = Post(kGeneral, {{"deviceName", ""}, {"language", ""}});
    EXPECT_TRUE(Has(reply.body, kInvalid)) << reply.body;
    EXPECT_EQ("fieldrouter", server_.storeGet("net/hostname"));
}

TEST_F(Pages, AFailedStoreWriteShowsTheSaveErrorAndMarksNoReboot)
{
    Poco::File(server_.devicePath("/var/lib/pardb")).remove(true);
    const HttpReply reply = Post(kDns, {{"dnsServer0", "1.1.1.1"}, {"dnsServer1", ""}, {"dnsSuffix", ""}});
    EXPECT_TRUE(Has(reply.body, "Save error: The form values were not saved.")) << reply.body;
    EXPECT_FALSE(server_.rebootMarked());
    EXPECT_EQ(200, Get(server_.port(), kDns).status);
}

TEST_F(Pages, GeneralStatusReportsTheBoardTemperature)
{
    const Json::Value status = Call("general_dynamic_status");
    EXPECT_EQ("45.7 degrees Celsius\n", status["boardTemp"].asString());
    for (const char* member : {"date", "uptime", "top", "processStatus"})
        EXPECT_TRUE(status[member].isString()) << member;
    EXPECT_FALSE(status["date"].asString().empty());
}

TEST_F(Pages, GeneralStatusWithoutATemperatureFileReadsZero)
{
    Poco::File(server_.devicePath("/sys/class/hwmon/hwmon0/temp1_input")).remove();
    EXPECT_EQ("0.0 degrees Celsius\n", Call("general_dynamic_status")["boardTemp"].asString());
}

TEST_F(Pages, ALongProcessListIsCutAt10000Bytes)
{
    server_.writeDeviceFile("/usr/bin/ps", "#!/bin/sh\nyes 'root 1 0 0 08:00 ? 00:00:01 /sbin/init' | head -n 1000\n",
                            true);
    const std::string processes = Call("general_dynamic_status")["processStatus"].asString();
    EXPECT_EQ(10000u, processes.size());
    EXPECT_EQ("...", processes.substr(processes.size() - 3));
}

TEST_F(Pages, EthernetStatusCarriesTheBridgeAndThePort)
{
    const Json::Value status = Call("ethernet1_status");
    EXPECT_TRUE(Has(status["br1"].asString(), "br1       Link encap:Ethernet")) << status;
    EXPECT_TRUE(Has(status["brctl"].asString(), "bridge name"));
    EXPECT_TRUE(Has(status["eth1"].asString(), "eth0      Link encap:Ethernet"));
    EXPECT_TRUE(Has(status["ethtool"].asString(), "Settings for eth0:"));
    EXPECT_TRUE(Has(CommandLog(), "/sbin/ifconfig eth0\n"));
}

TEST_F(Pages, DnsSavesEmptyFieldsAndMarksTheReboot)
{
    const HttpReply reply =
        Post(kDns, {{"dnsServer0", ""}, {"dnsServer1", ""}, {"dnsSuffix", ""}, {"saveButton", "Save"}});
    EXPECT_TRUE(Has(reply.body, "DNS server settings updated, reboot to take effect")) << reply.body;
    EXPECT_EQ("", server_.storeGet("net/lan_dns1"));
    EXPECT_EQ("", server_.storeGet("net/lan_dns2"));
    EXPECT_EQ("", server_.storeGet("net/lan_dns_suffix"));
    EXPECT_TRUE(server_.rebootMarked());
}

TEST_F(Pages, DnsStoresTheServersUnderTheirOffsetKeysAndTheAppendBox)
{
    Post(kDns, {{"dnsServer0", "9.9.9.9"}, {"dnsServer1", "1.1.1.1"}, {"dnsSuffix", "works.example"},
                {"isAppend", "y"}});
    EXPECT_EQ("9.9.9.9", server_.storeGet("net/lan_dns1"));
    EXPECT_EQ("1.1.1.1", server_.storeGet("net/lan_dns2"));
    EXPECT_EQ("works.example", server_.storeGet("net/lan_dns_suffix"));
    EXPECT_EQ("yes", server_.storeGet("net/lan_dns_is_append"));
    const std::string page = Get(server_.port(), kDns).body;
    EXPECT_TRUE(Has(page, "id=\"cfg_eth1_dns0\" name=\"dnsServer0\" value=\"9.9.9.9\"")) << page;
    EXPECT_TRUE(Has(page, "checked=\"checked\""));

    Post(kDns, {{"dnsServer0", "9.9.9.9"}, {"dnsServer1", "1.1.1.1"}, {"dnsSuffix", "works.example"}});
    EXPECT_EQ("no", server_.storeGet("net/lan_dns_is_append"));
}

TEST_F(Pages, DnsStatusShowsTheResolverFile)
{
    EXPECT_TRUE(Has(Call("dns_server_status")["currentConf"].asString(), "nameserver 8.8.8.8\n"));
    Poco::File(server_.devicePath("/etc/resolv.conf")).remove();
    EXPECT_TRUE(Has(Call("dns_server_status")["currentConf"].asString(), "No such file or directory"));
}

TEST_F(Pages, TailSyslogReadsThePersistentLogOnlyForLowerCaseYes)
{
    server_.writeDeviceFile("/var/log/messages", "volatile line\n");
    server_.writeDeviceFile("/home/root/log/messages", "persistent line\n");
    ASSERT_TRUE(server_.storeSet("syslogd/persistent", "Yes"));
    EXPECT_EQ("volatile line\n", Call("tail_syslog")["tail"].asString());
    ASSERT_TRUE(server_.storeSet("syslogd/persistent", "yes"));
    EXPECT_EQ("persistent line\n", Call("tail_syslog")["tail"].asString());
}

TEST_F(Pages, PrepareFirmwareUpgradeSuspendsTheDeployer)
{
    EXPECT_EQ(0, Call("prepare_fw_upgrade").asInt());
    EXPECT_TRUE(Has(CommandLog(), "/usr/bin/vigild --suspend deployer\n"));
}

TEST(PrepareFirmwareUpgrade, WithoutTheWatchdogToolAnswersTheShellStatus)
{
    Server server;
    ASSERT_TRUE(server.start()) << server.log();
    const HttpReply reply = Rpc(server.port(), "/async/rpc", "prepare_fw_upgrade");
    EXPECT_EQ(R"({"error":null,"id":1,"result":32512})", reply.body);
}

TEST_F(Pages, NotificationsOfTheStatusMethodsAreNotServed)
{
    for (const char* method : {"general_dynamic_status", "ethernet1_status", "dns_server_status", "tail_syslog",
                               "prepare_fw_upgrade", "fw_upgrade_status"}) {
        const HttpReply reply = Http(server_.port(), "POST", "/async/rpc",
                                     std::string(R"({"method":")") + method + R"(","params":[]})", "application/json");
        EXPECT_EQ(400, reply.status) << method;
        EXPECT_TRUE(Has(reply.body, "Notifications are not served")) << method;
        EXPECT_TRUE(Has(reply.body, "\"result\":null")) << reply.body;
    }
    EXPECT_FALSE(Has(CommandLog(), "vigild"));
}

TEST_F(Pages, FirmwareUpgradeStatusReportsFailureWithoutAStatusFile)
{
    EXPECT_EQ("{ 'state' : 'failed' }", Call("fw_upgrade_status").asString());
    EXPECT_TRUE(Has(server_.log(), "firmware upgrade failed"));
    server_.writeDeviceFile("/tmp/fwtool_status.txt", "{ 'state' : 'done' }\nsecond line\n");
    EXPECT_EQ("{ 'state' : 'done' }", Call("fw_upgrade_status").asString());
}

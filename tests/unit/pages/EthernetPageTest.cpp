// The Ethernet page: what a save stores and in which order, what it shows afterwards, its status and diagnostics.
#include "PageFixture.h"

#include "util/Pardb.h"

#include <cstdlib>

using namespace panelkit;
using namespace panelkit::test;
using ::testing::HasSubstr;
using ::testing::Not;

namespace {

class EthernetPage : public PageFixture {
};

const char kEthernet[] = "/config/network/ethernet1";
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

TEST_F(EthernetPage, EthernetInDhcpModeStoresOnlyTheModeAndSpeedsAndShowsTheStoredAddresses)
{
    const auto reply = Post(kEthernet, Ethernet("dhcp", "", "", {"1", "3"}));
    EXPECT_EQ(200, reply.status);
    EXPECT_TRUE(Has(reply.body, kEthernetSaved)) << reply.body;
    EXPECT_EQ("dhcp", StoreGet("net/lan_addr_mode"));
    EXPECT_EQ("10", StoreGet("net/lan_advertise_speed"));
    EXPECT_EQ("192.168.1.1", StoreGet("net/lan_ipaddr"));
    EXPECT_EQ("255.255.255.0", StoreGet("net/lan_netmask"));
    EXPECT_EQ("192.168.1.254", StoreGet("net/lan_gateway"));
    EXPECT_TRUE(Has(reply.body, "name=\"ipAddress\" value=\"192.168.1.1\""));
    EXPECT_TRUE(Has(reply.body, "name=\"gateway\" value=\"192.168.1.254\""));
    EXPECT_TRUE(Has(reply.body, "<option value=\"255.255.255.0\" selected=\"selected\">"));
    EXPECT_TRUE(Has(reply.body, "<option value=\"dhcp\" selected=\"selected\">DHCP"));
    EXPECT_TRUE(RebootMarked());
    EXPECT_TRUE(Has(reply.body, "id=\"alertsBox\"")) << "the reboot alert shows on the saving response";
}

TEST_F(EthernetPage, EthernetInStaticModeStoresTheAddressesAndKeepsThePostedValues)
{
    const auto reply = Post(kEthernet, Ethernet("static", "10.1.2.3", "10.1.2.1", {"1", "3"}));
    EXPECT_TRUE(Has(reply.body, kEthernetSaved)) << reply.body;
    EXPECT_EQ("static", StoreGet("net/lan_addr_mode"));
    EXPECT_EQ("10.1.2.3", StoreGet("net/lan_ipaddr"));
    EXPECT_EQ("255.255.0.0", StoreGet("net/lan_netmask"));
    EXPECT_EQ("10.1.2.1", StoreGet("net/lan_gateway"));
    EXPECT_EQ("10", StoreGet("net/lan_advertise_speed"));
    EXPECT_TRUE(Has(reply.body, "name=\"ipAddress\" value=\"10.1.2.3\""));
    EXPECT_TRUE(Has(reply.body, "<option value=\"1\" selected=\"selected\">10Mbs Full duplex"));
    EXPECT_TRUE(Has(reply.body, "<option value=\"3\" selected=\"selected\">100Mbs Full duplex"));
    EXPECT_TRUE(RebootMarked());
}

TEST_F(EthernetPage, EthernetInStaticModeWithoutAGatewayIsRefused)
{
    const auto reply = Post(kEthernet, Ethernet("static", "10.1.2.3", "", {"0"}));
    EXPECT_TRUE(Has(reply.body, kInvalid)) << reply.body;
    EXPECT_TRUE(Has(reply.body, "Invalid IP address"));
    EXPECT_EQ("192.168.1.1", StoreGet("net/lan_ipaddr"));
    EXPECT_EQ("static", StoreGet("net/lan_addr_mode"));
    EXPECT_EQ("15", StoreGet("net/lan_advertise_speed"));
    EXPECT_FALSE(RebootMarked());
}

TEST_F(EthernetPage, EthernetWithoutASpeedIsRefused)
{
    const auto reply = Post(kEthernet, Ethernet("dhcp", "", "", {}));
    EXPECT_TRUE(Has(reply.body, kInvalid)) << reply.body;
    EXPECT_TRUE(Has(reply.body, "At least one speed must be selected"));
    EXPECT_EQ("static", StoreGet("net/lan_addr_mode"));
    EXPECT_EQ("15", StoreGet("net/lan_advertise_speed"));
    EXPECT_FALSE(RebootMarked());
}

TEST_F(EthernetPage, EthernetShowsTheStoredSpeedMaskAsSelections)
{
    ASSERT_TRUE(util::Pardb::Set("net/lan_advertise_speed", std::atoi("5")));
    const std::string body = Get(kEthernet).body;
    EXPECT_TRUE(Has(body, "<option value=\"0\" selected=\"selected\">10Mbs Half duplex</option>")) << body;
    EXPECT_TRUE(Has(body, "<option value=\"1\">10Mbs Full duplex</option>"));
    EXPECT_TRUE(Has(body, "<option value=\"2\" selected=\"selected\">100Mbs Half duplex</option>"));
    EXPECT_TRUE(Has(body, "<option value=\"3\">100Mbs Full duplex</option>"));
}

TEST_F(EthernetPage, EthernetWithMissingKeysShowsEmptyFieldsAndNoSpeed)
{
    for (const char* key : {"net/lan_addr_mode", "net/lan_ipaddr", "net/lan_netmask", "net/lan_gateway",
                            "net/lan_advertise_speed"})
        ASSERT_TRUE(util::Pardb::Delete(key));
    const std::string body = Get(kEthernet).body;
    EXPECT_TRUE(Has(body, "name=\"ipAddress\" value=\"\"")) << body;
    EXPECT_FALSE(Has(body, "selected=\"selected\">10Mbs"));
    EXPECT_FALSE(Has(body, "selected=\"selected\">100Mbs"));
}

TEST_F(EthernetPage, EthernetShowsTheDiagnosticsOfTheDevice)
{
    const std::string body = Get(kEthernet).body;
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

TEST_F(EthernetPage, EthernetStatusCarriesTheBridgeAndThePort)
{
    const Json::Value status = Call("ethernet1_status");
    EXPECT_TRUE(Has(status["br1"].asString(), "br1       Link encap:Ethernet")) << status;
    EXPECT_TRUE(Has(status["brctl"].asString(), "bridge name"));
    EXPECT_TRUE(Has(status["eth1"].asString(), "eth0      Link encap:Ethernet"));
    EXPECT_TRUE(Has(status["ethtool"].asString(), "Settings for eth0:"));
    EXPECT_TRUE(Has(CommandLog(), "/sbin/ifconfig eth0\n"));
}

TEST_F(EthernetPage, StaticSaveStopsAtARefusedGatewayAfterTheAddress)
{
    StoreSet("net/lan_addr_mode", "dhcp");
    StoreRefuse("net/lan_gateway");
    const auto reply = Post(kEthernet, Ethernet("static", "10.1.2.3", "10.1.2.1", {"1", "3"}));
    EXPECT_THAT(reply.body, HasSubstr("Save error: The form values were not saved."));
    EXPECT_EQ("10.1.2.3", StoreGet("net/lan_ipaddr")) << "the address goes first";
    EXPECT_EQ("255.255.255.0", StoreGet("net/lan_netmask")) << "nothing after the refused gateway";
    EXPECT_EQ("dhcp", StoreGet("net/lan_addr_mode")) << "the mode goes after the addresses";
    EXPECT_EQ("15", StoreGet("net/lan_advertise_speed"));
    EXPECT_FALSE(RebootMarked());
}

TEST_F(EthernetPage, ARefusedModeLeavesTheSpeedsUnwritten)
{
    StoreRefuse("net/lan_addr_mode");
    const auto reply = Post(kEthernet, Ethernet("static", "10.1.2.3", "10.1.2.1", {"1", "3"}));
    EXPECT_THAT(reply.body, HasSubstr("Save error: The form values were not saved."));
    EXPECT_EQ("10.1.2.3", StoreGet("net/lan_ipaddr"));
    EXPECT_EQ("10.1.2.1", StoreGet("net/lan_gateway"));
    EXPECT_EQ("255.255.0.0", StoreGet("net/lan_netmask"));
    EXPECT_EQ("15", StoreGet("net/lan_advertise_speed"));
}

TEST_F(EthernetPage, ARefusedStaticPostShowsThePostedAddressesNotTheStoredOnes)
{
    const auto reply = Post(kEthernet, Ethernet("static", "10.9.9.9", "10.9.9.1", {}));
    EXPECT_THAT(reply.body, HasSubstr(kInvalid));
    EXPECT_THAT(reply.body, HasSubstr("name=\"ipAddress\" value=\"10.9.9.9\""));
    EXPECT_THAT(reply.body, HasSubstr("name=\"gateway\" value=\"10.9.9.1\""));
    EXPECT_THAT(reply.body, HasSubstr("<option value=\"255.255.0.0\" selected=\"selected\">"));
    EXPECT_EQ("192.168.1.1", StoreGet("net/lan_ipaddr"));
}

TEST_F(EthernetPage, AnInvalidAddressIsRefusedInDhcpModeToo)
{
    const auto reply = Post(kEthernet, Ethernet("dhcp", "10.1.2", "", {"0"}));
    EXPECT_THAT(reply.body, HasSubstr(kInvalid));
    EXPECT_EQ("static", StoreGet("net/lan_addr_mode"));
}

TEST_F(EthernetPage, AddressRowsCarryTheModeTheyDependOn)
{
    const std::string body = Get(kEthernet).body;
    EXPECT_THAT(body, HasSubstr("<tr data-when-field=\"addressMode\" data-when-value=\"static\"><th><label "
                                "for=\"cfg_eth1_ip\">IP Address</label>"));
    EXPECT_THAT(body, HasSubstr("<tr data-when-field=\"addressMode\" data-when-value=\"static\"><th><label "
                                "for=\"cfg_eth1_netmask\">"));
    EXPECT_THAT(body, HasSubstr("<tr><th><label for=\"cfg_eth1_speed\">"));
}

TEST_F(EthernetPage, DiagnosticsAreCutAtTheirLimits)
{
    WriteDeviceFile("/bin/netstat", "#!/bin/sh\nhead -c 9000 /dev/zero | tr '\\0' n\n", true);
    WriteDeviceFile("/sbin/route", "#!/bin/sh\nhead -c 5000 /dev/zero | tr '\\0' r\n", true);
    const std::string body = Get(kEthernet).body;
    EXPECT_EQ(std::string(8189, 'n') + "...", SectionText(body, "Network Status"));
    EXPECT_EQ(std::string(4093, 'r') + "...", SectionText(body, "Routing"));
}

TEST_F(EthernetPage, StatusOutputIsCutAt4096Bytes)
{
    WriteDeviceFile("/usr/sbin/ethtool", "#!/bin/sh\nhead -c 5000 /dev/zero | tr '\\0' e\n", true);
    WriteDeviceFile("/usr/sbin/brctl", "#!/bin/sh\nhead -c 4096 /dev/zero | tr '\\0' b\n", true);
    const Json::Value status = Call("ethernet1_status");
    EXPECT_EQ(std::string(4093, 'e') + "...", status["ethtool"].asString());
    EXPECT_EQ(std::string(4096, 'b'), status["brctl"].asString()) << "exactly the limit stays whole";
}

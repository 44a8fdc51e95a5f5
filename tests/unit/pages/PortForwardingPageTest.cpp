// The port forwarding page: both tables in order, adding, editing, saving and deleting rules, the checks and the status.
#include "PageFixture.h"

#include "util/Pardb.h"

using namespace panelkit;
using namespace panelkit::test;
using ::testing::HasSubstr;
using ::testing::Not;

namespace {

const char kPage[] = "/config/network/port_forwarding";
const char kApplied[] = "/etc/nat_setup.sh web_forwarding\n";
const char kPresetExists[] = "Port forward rule not added. Preset rule exists with same protocol and source port.";
const char kUserExists[] = "Port forward rule not added. User rule exists with same protocol and source port.";
const char kRange[] = "Invalid range; minimum 1, maximum 65535";
const char kInvalid[] = "Invalid values: The form values were not saved.";

class PortForwardingPage : public PageFixture {
protected:
    PortForwardingPage()
    {
        // Start from no user rules at all.
        for (const char* prefix : {"net/portfwd/tcp", "net/portfwd/udp"})
            for (const auto& name : util::Pardb::GetList(prefix))
                util::Pardb::Delete(name);
    }

    PageReply Add(const std::string& protocol, const std::string& port, const std::string& ip,
                  const std::string& destination, const std::string& rowId = "0")
    {
        return Post(kPage, {{"rowId", rowId}, {"editing", "false"}, {"protocol", protocol}, {"sourcePort", port},
                            {"destinationIP", ip}, {"destinationPort", destination}, {"add", "Add Row"}});
    }

    PageReply Save(const std::string& rowId, const std::string& protocol, const std::string& port,
                   const std::string& ip, const std::string& destination, const std::string& oldIp,
                   const std::string& oldDestination)
    {
        return Post(kPage, {{"rowId", rowId}, {"editing", "true"}, {"protocol", protocol}, {"sourcePort", port},
                            {"destinationIP", ip}, {"destinationPort", destination}, {"protocolOld", protocol},
                            {"sourcePortOld", port}, {"destinationIPOld", oldIp},
                            {"destinationPortOld", oldDestination}, {"save", "Save"}});
    }

    // The position of the user row that shows the text, npos when none does.
    static std::size_t RowOf(const std::string& page, const std::string& text)
    {
        const auto at = page.find(text);
        if (at == std::string::npos)
            return at;
        const auto row = page.rfind("id=\"row_", at);
        return std::stoul(page.substr(row + 8));
    }
};

}  // namespace

TEST_F(PortForwardingPage, ThePresetTableShowsTheVncRuleAndTheThreeFixedOnes)
{
    const std::string page = Get(kPage).body;
    EXPECT_THAT(page, HasSubstr("<h3>Preset Rules</h3>"));
    EXPECT_THAT(page, HasSubstr("<td>TCP</td><td>5900</td><td>:</td><td>192.168.1.20</td><td>5900</td>"));
    EXPECT_THAT(page, HasSubstr("<td>TCP</td><td>8002</td><td>:</td><td>192.168.0.100</td><td>8002</td>"));
    EXPECT_THAT(page, HasSubstr("<td>TCP</td><td>8003</td><td>:</td><td>192.168.0.101</td><td>8003</td>"));
    EXPECT_THAT(page, HasSubstr("<td>TCP</td><td>8800</td><td>:</td><td>192.168.0.20</td><td>80</td>"));
}

TEST_F(PortForwardingPage, WithoutTheVncPortOnlyTheThreeFixedRulesArePreset)
{
    util::Pardb::Delete("net/vnc/port");
    const std::string page = Get(kPage).body;
    EXPECT_THAT(page, Not(HasSubstr("5900")));
    const auto preset = page.substr(0, page.find("<h3>User Rules</h3>"));
    std::size_t rows = 0;
    for (auto at = preset.find("class=\"forwarding_form_row\""); at != std::string::npos;
         at = preset.find("class=\"forwarding_form_row\"", at + 1))
        ++rows;
    EXPECT_EQ(3u, rows);
}

TEST_F(PortForwardingPage, AddingAPresetPortIsRefusedButTheOtherProtocolIsAccepted)
{
    auto reply = Add("tcp", "8002", "10.0.0.2", "8002");
    EXPECT_THAT(reply.body, HasSubstr(kPresetExists));
    EXPECT_EQ("<missing>", StoreGet("net/portfwd/tcp/08002/d_ip"));
    EXPECT_EQ("", CommandLog());
    // The refused values stay in the add row.
    EXPECT_THAT(reply.body, HasSubstr("value=\"10.0.0.2\""));

    reply = Add("udp", "8002", "10.0.0.2", "8002");
    EXPECT_THAT(reply.body, HasSubstr("Success: The form values were saved."));
    EXPECT_EQ("10.0.0.2", StoreGet("net/portfwd/udp/08002/d_ip"));
    EXPECT_EQ("8002", StoreGet("net/portfwd/udp/08002/d_port"));
    EXPECT_EQ(kApplied, CommandLog());
    // The add row is empty again.
    EXPECT_THAT(reply.body, HasSubstr("id=\"cfg_pfwadd_dest_ip\" name=\"destinationIP\" value=\"\""));
}

TEST_F(PortForwardingPage, ASecondUserRuleOfTheSameKeyIsRefusedButSavingItsOwnRowIsAccepted)
{
    Add("tcp", "443", "10.0.0.1", "443");
    auto reply = Add("tcp", "443", "10.0.0.9", "8443", "1");
    EXPECT_THAT(reply.body, HasSubstr(kUserExists));
    EXPECT_EQ("10.0.0.1", StoreGet("net/portfwd/tcp/00443/d_ip"));

    reply = Save("0", "tcp", "443", "10.0.0.7", "4443", "10.0.0.1", "443");
    EXPECT_THAT(reply.body, HasSubstr("Success: The form values were saved."));
    EXPECT_EQ("10.0.0.7", StoreGet("net/portfwd/tcp/00443/d_ip"));
    EXPECT_EQ("4443", StoreGet("net/portfwd/tcp/00443/d_port"));
    EXPECT_EQ(std::string(kApplied) + kApplied, CommandLog());
    // Saved: the row is shown read-only again.
    EXPECT_THAT(reply.body, Not(HasSubstr("id=\"cfg_pfw_dest_ip\"")));
}

TEST_F(PortForwardingPage, SavingUnderAnotherRowsKeyIsRefused)
{
    Add("tcp", "22", "10.0.0.1", "22");
    Add("tcp", "443", "10.0.0.2", "443", "1");
    const auto reply = Save("1", "tcp", "22", "10.0.0.3", "22", "10.0.0.2", "443");
    EXPECT_THAT(reply.body, HasSubstr(kUserExists));
    EXPECT_EQ("10.0.0.1", StoreGet("net/portfwd/tcp/00022/d_ip"));
}

TEST_F(PortForwardingPage, RulesAreListedTcpFirstThenUdpEachByPort)
{
    Add("tcp", "8080", "10.0.0.80", "80");
    Add("udp", "53", "10.0.0.53", "53", "1");
    Add("tcp", "22", "10.0.0.22", "22", "2");
    const std::string page = Get(kPage).body;
    EXPECT_EQ(0u, RowOf(page, "10.0.0.22"));
    EXPECT_EQ(1u, RowOf(page, "10.0.0.80"));
    EXPECT_EQ(2u, RowOf(page, "10.0.0.53"));
    // The add row's form points after the last rule.
    EXPECT_THAT(page, HasSubstr("id=\"add_rule_form\" method=\"post\" action=\"\"><input type=\"hidden\" name=\"_csrf\""));
    EXPECT_THAT(page.substr(page.find("id=\"add_rule_form\"")), HasSubstr("name=\"rowId\" value=\"3\""));
}

TEST_F(PortForwardingPage, RulesAreEnumeratedAcrossBothPrefixesAndAHalfRuleShows)
{
    StoreSet("net/portfwd/udp/00161/d_ip", "192.168.1.12");
    StoreSet("net/portfwd/tcp/00081/d_port", "8081");
    const std::string page = Get(kPage).body;
    EXPECT_THAT(page, HasSubstr("<td>TCP</td><td>81</td><td>:</td><td></td><td>8081</td>"));
    EXPECT_THAT(page, HasSubstr("<td>UDP</td><td>161</td><td>:</td><td>192.168.1.12</td><td>0</td>"));
}

TEST_F(PortForwardingPage, BadStoredValuesAreSkipped)
{
    StoreSet("net/portfwd/tcp/00090/d_ip", "");
    ASSERT_TRUE(util::Pardb::Set("net/portfwd/tcp/00090/d_port", 0));
    StoreSet("net/portfwd/udp/00070/d_ip", "10.0.0.70");
    const auto reply = Get(kPage);
    EXPECT_EQ(200, reply.status);
    EXPECT_THAT(reply.body, Not(HasSubstr("<td>90</td>")));
    EXPECT_THAT(reply.body, HasSubstr("10.0.0.70"));
}

TEST_F(PortForwardingPage, PortEightyIsStoredUnderFiveDigits)
{
    Add("tcp", "80", "192.168.1.10", "8080");
    EXPECT_EQ("192.168.1.10", StoreGet("net/portfwd/tcp/00080/d_ip"));
    EXPECT_EQ("8080", StoreGet("net/portfwd/tcp/00080/d_port"));
}

TEST_F(PortForwardingPage, EditShowsTheEditRowInPlaceAndCancelLeavesIt)
{
    Add("tcp", "22", "10.0.0.22", "22");
    Add("tcp", "80", "10.0.0.80", "80", "1");
    const std::string before = CommandLog();
    auto reply = Post(kPage, {{"rowId", "1"}, {"editing", "false"}, {"protocol", "tcp"}, {"sourcePort", "80"},
                              {"destinationIP", "10.0.0.80"}, {"destinationPort", "80"}, {"edit", "Edit"}});
    const std::string& page = reply.body;
    const auto row = page.find("id=\"row_1\"");
    ASSERT_NE(std::string::npos, row) << page;
    const auto next = page.find("</tr>", row);
    const std::string edited = page.substr(row, next - row);
    EXPECT_THAT(edited, HasSubstr("id=\"cfg_pfw_dest_ip\""));
    EXPECT_THAT(edited, HasSubstr("value=\"10.0.0.80\""));
    EXPECT_THAT(edited, HasSubstr("name=\"destinationIPOld\" value=\"10.0.0.80\""));
    EXPECT_THAT(edited, HasSubstr("name=\"editing\" value=\"true\""));
    EXPECT_THAT(edited, HasSubstr("value=\"Save\""));
    EXPECT_THAT(page.substr(page.find("id=\"row_0\""), 400), Not(HasSubstr("cfg_pfw_dest_ip")));
    EXPECT_EQ(before, CommandLog());

    reply = Post(kPage, {{"rowId", "1"}, {"editing", "true"}, {"cancel", "Cancel"}});
    EXPECT_THAT(reply.body, Not(HasSubstr("id=\"cfg_pfw_dest_ip\"")));
    EXPECT_EQ(before, CommandLog());
    EXPECT_EQ("10.0.0.80", StoreGet("net/portfwd/tcp/00080/d_ip"));
}

TEST_F(PortForwardingPage, DeleteRemovesTheRowAtItsIndex)
{
    Add("tcp", "22", "10.0.0.22", "22");
    Add("udp", "53", "10.0.0.53", "53", "1");
    const auto reply = Post(kPage, {{"rowId", "1"}, {"editing", "false"}, {"delete", "Delete"}});
    EXPECT_EQ("<missing>", StoreGet("net/portfwd/udp/00053/d_ip"));
    EXPECT_EQ("<missing>", StoreGet("net/portfwd/udp/00053/d_port"));
    EXPECT_EQ("10.0.0.22", StoreGet("net/portfwd/tcp/00022/d_ip"));
    EXPECT_THAT(reply.body, Not(HasSubstr("10.0.0.53")));
    EXPECT_EQ(std::string(kApplied) + kApplied + kApplied, CommandLog());

    // No row at the index: nothing deleted, the rules applied again all the same.
    Post(kPage, {{"rowId", "7"}, {"editing", "false"}, {"delete", "Delete"}});
    EXPECT_EQ("10.0.0.22", StoreGet("net/portfwd/tcp/00022/d_ip"));
    EXPECT_EQ(std::string(kApplied) + kApplied + kApplied + kApplied, CommandLog());
}

TEST_F(PortForwardingPage, PortsOutsideTheRangeAreRefusedInTheAddRow)
{
    for (const auto& [source, destination] : {std::pair<std::string, std::string>{"0", "80"}, {"65536", "80"},
                                              {"80", "0"}, {"80", "70000"}}) {
        const auto reply = Add("tcp", source, "10.0.0.1", destination);
        EXPECT_THAT(reply.body, HasSubstr(kInvalid)) << source << " " << destination;
        EXPECT_THAT(reply.body, HasSubstr(kRange));
    }
    EXPECT_EQ("<missing>", StoreGet("net/portfwd/tcp/00080/d_ip"));
    EXPECT_EQ("", CommandLog());
    EXPECT_THAT(Get(kPage).body, HasSubstr("data-min=\"1\" data-max=\"65535\""));
}

TEST_F(PortForwardingPage, AnEditedPortOutsideTheRangeIsRefusedAndTheRowShowsItsStoredValues)
{
    Add("tcp", "22", "10.0.0.22", "22");
    const std::string before = CommandLog();
    const auto reply = Save("0", "tcp", "22", "10.0.0.99", "65536", "10.0.0.22", "22");
    EXPECT_THAT(reply.body, HasSubstr(kInvalid));
    EXPECT_THAT(reply.body, HasSubstr(kRange));
    EXPECT_EQ("10.0.0.22", StoreGet("net/portfwd/tcp/00022/d_ip"));
    EXPECT_EQ("22", StoreGet("net/portfwd/tcp/00022/d_port"));
    EXPECT_EQ(before, CommandLog());
    // Still editing, showing what is stored.
    EXPECT_THAT(reply.body, HasSubstr("id=\"cfg_pfw_dest_ip\" name=\"destinationIP\" value=\"10.0.0.22\""));
    EXPECT_THAT(reply.body, Not(HasSubstr("10.0.0.99")));
}

TEST_F(PortForwardingPage, MissingFieldsFailValidation)
{
    const auto reply = Add("tcp", "", "", "80");
    EXPECT_THAT(reply.body, HasSubstr(kInvalid));
    EXPECT_EQ("", CommandLog());
}

TEST_F(PortForwardingPage, TheStatusShowsBothFirewallTables)
{
    const Json::Value status = Call("port_forwarding_status");
    EXPECT_THAT(status["filtering"].asString(), HasSubstr("Chain INPUT"));
    EXPECT_THAT(status["nat"].asString(), HasSubstr("Chain PREROUTING"));
    EXPECT_THAT(Get(kPage).body, HasSubstr("id=\"port_forwarding_status\""));
}

TEST_F(PortForwardingPage, DeletingARuleWithOnlyOneKeyRemovesIt)
{
    StoreSet("net/portfwd/tcp/00081/d_port", "8081");
    Post(kPage, {{"rowId", "0"}, {"editing", "false"}, {"delete", "Delete"}});
    EXPECT_EQ("<missing>", StoreGet("net/portfwd/tcp/00081/d_port"));
    EXPECT_THAT(Get(kPage).body, Not(HasSubstr("<td>81</td>")));
}

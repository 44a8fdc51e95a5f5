// The port forwarding page on the real binary and a simulated device: the checks, the store, the NAT script and the log.
#include "DeviceServerTest.h"
#include "Http.h"
#include "Process.h"
#include "Server.h"

#include <gtest/gtest.h>

using namespace panelkit::test;

namespace {

const char kPage[] = "/config/network/port_forwarding";
const char kApplied[] = "/etc/nat_setup.sh web_forwarding\n";
const char kPresetExists[] = "Port forward rule not added. Preset rule exists with same protocol and source port.";
const char kUserExists[] = "Port forward rule not added. User rule exists with same protocol and source port.";
const char kSaved[] = "Success: The form values were saved.";
const char kInvalid[] = "Invalid values: The form values were not saved.";
const char kRange[] = "Invalid range; minimum 1, maximum 65535";

bool Has(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

std::size_t Count(const std::string& text, const std::string& part)
{
    std::size_t count = 0;
    for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++count;
    return count;
}

// The seeded device forwards TCP 80, TCP 8443 and UDP 161, in that order.
class PortForwarding : public DeviceServerTest {
protected:
    HttpReply Add(const std::string& protocol, const std::string& port, const std::string& ip,
                  const std::string& destination)
    {
        return PostForm(server_.port(), kPage,
                        {{"rowId", "3"}, {"editing", "false"}, {"protocol", protocol}, {"sourcePort", port},
                         {"destinationIP", ip}, {"destinationPort", destination}, {"add", "Add Row"}});
    }

    HttpReply Save(const std::string& rowId, const std::string& protocol, const std::string& port,
                   const std::string& ip, const std::string& destination)
    {
        return PostForm(server_.port(), kPage,
                        {{"rowId", rowId}, {"editing", "true"}, {"protocol", protocol}, {"sourcePort", port},
                         {"destinationIP", ip}, {"destinationPort", destination}, {"protocolOld", protocol},
                         {"sourcePortOld", port}, {"destinationIPOld", "192.168.1.10"},
                         {"destinationPortOld", "80"}, {"save", "Save"}});
    }

    void StoreDelete(const std::string& key)
    {
        ASSERT_EQ(0, RunTool(server_.work(), {PANELKIT_PARDB, "--root", server_.devicePath(""), "del", key}).first);
    }
};

}  // namespace

TEST_F(PortForwarding, APresetPortIsRefusedForTcpAndAcceptedForUdp)
{
    HttpReply reply = Add("tcp", "8002", "10.0.0.2", "8002");
    EXPECT_TRUE(Has(reply.body, kPresetExists)) << reply.body.substr(0, 3000);
    EXPECT_EQ("<missing>", server_.storeGet("net/portfwd/tcp/08002/d_ip"));
    EXPECT_EQ("", CommandLog());

    reply = Add("udp", "8002", "10.0.0.2", "8002");
    EXPECT_TRUE(Has(reply.body, kSaved));
    EXPECT_EQ("10.0.0.2", server_.storeGet("net/portfwd/udp/08002/d_ip"));
    EXPECT_EQ("8002", server_.storeGet("net/portfwd/udp/08002/d_port"));
    EXPECT_EQ(kApplied, CommandLog());
}

TEST_F(PortForwarding, ASecondUserRuleIsRefusedAndSavingItsOwnRowIsAccepted)
{
    HttpReply reply = Add("tcp", "80", "10.0.0.9", "8080");
    EXPECT_TRUE(Has(reply.body, kUserExists));
    EXPECT_EQ("192.168.1.10", server_.storeGet("net/portfwd/tcp/00080/d_ip"));
    EXPECT_EQ("", CommandLog());

    reply = Save("0", "tcp", "80", "10.0.0.9", "8080");
    EXPECT_TRUE(Has(reply.body, kSaved));
    EXPECT_EQ("10.0.0.9", server_.storeGet("net/portfwd/tcp/00080/d_ip"));
    EXPECT_EQ("8080", server_.storeGet("net/portfwd/tcp/00080/d_port"));
    EXPECT_EQ(kApplied, CommandLog());
}

TEST_F(PortForwarding, RulesAreListedTcpByPortThenUdpWithTheirRowIndices)
{
    Add("tcp", "22", "10.0.0.22", "22");
    const std::string page = Get(server_.port(), kPage).body;
    const auto row = [&](const std::string& text) { return page.rfind("id=\"row_", page.find(text)); };
    EXPECT_LT(row("10.0.0.22"), row("192.168.1.10"));
    EXPECT_LT(row("192.168.1.10"), row("192.168.1.11"));
    EXPECT_LT(row("192.168.1.11"), row("192.168.1.12"));
    EXPECT_EQ("id=\"row_0\"", page.substr(row("10.0.0.22"), 10));
    EXPECT_EQ("id=\"row_3\"", page.substr(row("192.168.1.12"), 10));
}

TEST_F(PortForwarding, ASourcePortIsStoredAsFiveDigits)
{
    Add("tcp", "81", "10.0.0.81", "80");
    EXPECT_EQ("10.0.0.81", server_.storeGet("net/portfwd/tcp/00081/d_ip"));
    EXPECT_EQ("80", server_.storeGet("net/portfwd/tcp/00081/d_port"));
}

TEST_F(PortForwarding, WithoutTheVncPortThreeFixedRulesArePresetAndTheLogSaysWhy)
{
    StoreDelete("net/vnc/port");
    const std::string page = Get(server_.port(), kPage).body;
    const std::string preset = page.substr(0, page.find("<h3>User Rules</h3>"));
    EXPECT_EQ(3u, Count(preset, "class=\"forwarding_form_row\"")) << preset;
    EXPECT_FALSE(Has(preset, "5900"));
    EXPECT_TRUE(WaitForText(server_.logPath(), "net/vnc parameters not set", 5000)) << server_.log();
}

TEST_F(PortForwarding, BadStoredValuesAreSkippedWithALogLine)
{
    ASSERT_TRUE(server_.storeSet("net/portfwd/tcp/00090/d_port", "0", "--int"));
    const HttpReply reply = Get(server_.port(), kPage);
    EXPECT_EQ(200, reply.status);
    EXPECT_FALSE(Has(reply.body, "<td>90</td>"));
    EXPECT_TRUE(WaitForText(server_.logPath(),
                            "PortForwarding load TCP values: Bad PARDB parameter net/portfwd/tcp/00090/d_port", 5000))
        << server_.log();
}

TEST_F(PortForwarding, PortsOutOfRangeAreRefusedWithoutStoringOrApplying)
{
    HttpReply reply = Add("tcp", "70000", "10.0.0.7", "80");
    EXPECT_TRUE(Has(reply.body, kInvalid));
    EXPECT_TRUE(Has(reply.body, kRange));
    reply = Save("0", "tcp", "80", "10.0.0.9", "0");
    EXPECT_TRUE(Has(reply.body, kInvalid));
    EXPECT_TRUE(Has(reply.body, kRange));
    EXPECT_EQ("192.168.1.10", server_.storeGet("net/portfwd/tcp/00080/d_ip"));
    EXPECT_EQ("80", server_.storeGet("net/portfwd/tcp/00080/d_port"));
    EXPECT_EQ("", CommandLog());
    EXPECT_TRUE(WaitForText(server_.logPath(), "PortForwarding row add failed validation", 5000));
    EXPECT_TRUE(WaitForText(server_.logPath(), "PortForwarding row save failed validation", 5000));
}

TEST_F(PortForwarding, DeleteRemovesTheRowsKeysAndAppliesTheRules)
{
    const HttpReply reply = PostForm(server_.port(), kPage, {{"rowId", "2"}, {"editing", "false"}, {"delete", "Delete"}});
    EXPECT_EQ(200, reply.status);
    EXPECT_EQ("<missing>", server_.storeGet("net/portfwd/udp/00161/d_ip"));
    EXPECT_EQ("<missing>", server_.storeGet("net/portfwd/udp/00161/d_port"));
    EXPECT_EQ("192.168.1.11", server_.storeGet("net/portfwd/tcp/08443/d_ip"));
    EXPECT_EQ(kApplied, CommandLog());
}

TEST_F(PortForwarding, TheStatusShowsTheFilterAndNatTables)
{
    const Json::Value status = Call("port_forwarding_status");
    EXPECT_TRUE(Has(status["filtering"].asString(), "Chain INPUT"));
    EXPECT_TRUE(Has(status["nat"].asString(), "DNAT"));
}

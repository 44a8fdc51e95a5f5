// The DNS server page: the servers under their offset keys, the append box, the reboot mark and the resolver status.
#include "PageFixture.h"

#include <Poco/File.h>

using namespace panelkit;
using namespace panelkit::test;
using ::testing::HasSubstr;
using ::testing::Not;

namespace {

class DnsServerPage : public PageFixture {
};

const char kDns[] = "/config/network/dns_server";

}  // namespace

TEST_F(DnsServerPage, AFailedStoreWriteShowsTheSaveErrorAndMarksNoReboot)
{
    StoreRefuse("net/lan_dns1");
    const auto reply = Post(kDns, {{"dnsServer0", "1.1.1.1"}, {"dnsServer1", ""}, {"dnsSuffix", ""}});
    EXPECT_TRUE(Has(reply.body, "Save error: The form values were not saved.")) << reply.body;
    EXPECT_FALSE(RebootMarked());
    EXPECT_EQ(200, Get(kDns).status);
}

TEST_F(DnsServerPage, DnsSavesEmptyFieldsAndMarksTheReboot)
{
    const auto reply =
        Post(kDns, {{"dnsServer0", ""}, {"dnsServer1", ""}, {"dnsSuffix", ""}, {"saveButton", "Save"}});
    EXPECT_TRUE(Has(reply.body, "DNS server settings updated, reboot to take effect")) << reply.body;
    EXPECT_EQ("", StoreGet("net/lan_dns1"));
    EXPECT_EQ("", StoreGet("net/lan_dns2"));
    EXPECT_EQ("", StoreGet("net/lan_dns_suffix"));
    EXPECT_TRUE(RebootMarked());
}

TEST_F(DnsServerPage, DnsStoresTheServersUnderTheirOffsetKeysAndTheAppendBox)
{
    Post(kDns, {{"dnsServer0", "9.9.9.9"}, {"dnsServer1", "1.1.1.1"}, {"dnsSuffix", "works.example"},
                {"isAppend", "y"}});
    EXPECT_EQ("9.9.9.9", StoreGet("net/lan_dns1"));
    EXPECT_EQ("1.1.1.1", StoreGet("net/lan_dns2"));
    EXPECT_EQ("works.example", StoreGet("net/lan_dns_suffix"));
    EXPECT_EQ("yes", StoreGet("net/lan_dns_is_append"));
    const std::string page = Get(kDns).body;
    EXPECT_TRUE(Has(page, "id=\"cfg_eth1_dns0\" name=\"dnsServer0\" value=\"9.9.9.9\"")) << page;
    EXPECT_TRUE(Has(page, "checked=\"checked\""));

    Post(kDns, {{"dnsServer0", "9.9.9.9"}, {"dnsServer1", "1.1.1.1"}, {"dnsSuffix", "works.example"}});
    EXPECT_EQ("no", StoreGet("net/lan_dns_is_append"));
}

TEST_F(DnsServerPage, DnsStatusShowsTheResolverFile)
{
    EXPECT_TRUE(Has(Call("dns_server_status")["currentConf"].asString(), "nameserver 8.8.8.8\n"));
    Poco::File(DevicePath("/etc/resolv.conf")).remove();
    EXPECT_TRUE(Has(Call("dns_server_status")["currentConf"].asString(), "No such file or directory"));
}

TEST_F(DnsServerPage, TheResolverStatusIsCutAt4096Bytes)
{
    WriteDeviceFile("/etc/resolv.conf", std::string(5000, 'x'));
    EXPECT_EQ(std::string(4093, 'x') + "...", Call("dns_server_status")["currentConf"].asString());
}

TEST_F(DnsServerPage, TheAppendBoxIsLabelledWithoutPointingAtNothing)
{
    const std::string body = Get(kDns).body;
    EXPECT_THAT(body, HasSubstr("<th><label>Append to System DNS Configuration</label></th>"));
    EXPECT_THAT(body, Not(HasSubstr("for=\"\"")));
}

TEST_F(DnsServerPage, AWriteRefusedHalfwayKeepsTheEarlierWritesAndStopsTheLater)
{
    StoreRefuse("net/lan_dns2");
    Post(kDns, {{"dnsServer0", "9.9.9.9"}, {"dnsServer1", "1.1.1.1"}, {"dnsSuffix", "works.example"}});
    EXPECT_EQ("9.9.9.9", StoreGet("net/lan_dns1"));
    EXPECT_EQ("site.local", StoreGet("net/lan_dns_suffix"));
    EXPECT_FALSE(RebootMarked());
}

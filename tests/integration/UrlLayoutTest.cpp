// The URL layout served by the real binary through the internal HTTP server.
#include "Http.h"
#include "Server.h"

#include <gtest/gtest.h>

using namespace panelkit::test;

namespace {

class UrlLayout : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        server_ = new Server("http");
        ASSERT_TRUE(server_->start()) << server_->log();
    }
    static void TearDownTestSuite()
    {
        delete server_;
        server_ = nullptr;
    }
    static Server* server_;
};

Server* UrlLayout::server_ = nullptr;

}  // namespace

TEST_F(UrlLayout, ConfigurationRootShowsTheGeneralPageWithoutRedirect)
{
    for (const std::string path : {"/config", "/config/"}) {
        const HttpReply reply = Get(server_->port(), path);
        EXPECT_EQ(200, reply.status) << path;
        EXPECT_NE(std::string::npos, reply.body.find("id=\"config_page_title\">General Device Configuration</h2>")) << path << ": " << reply.body;
        EXPECT_EQ("", reply.header("Location"));
    }
}

TEST_F(UrlLayout, EthernetPageIsServedByTheNetworkController)
{
    const HttpReply reply = Get(server_->port(), "/config/network/ethernet1");
    EXPECT_EQ(200, reply.status);
    EXPECT_NE(std::string::npos, reply.body.find("id=\"config_page_title\">Ethernet 1 Configuration</h2>"));
    EXPECT_NE(std::string::npos, reply.body.find("/config/network/ethernet1"));
}

TEST_F(UrlLayout, ThreeSegmentsBelowSettingsReachTheSettingsController)
{
    const HttpReply reply = Get(server_->port(), "/config/settings/a/b/c");
    EXPECT_EQ(404, reply.status);
    EXPECT_TRUE(WaitForText(server_->logPath(), "settings: no page for /a/b/c", 5000)) << server_->log();
}

TEST_F(UrlLayout, TwoSegmentsBelowNetworkAreNotFound)
{
    const HttpReply reply = Get(server_->port(), "/config/network/ethernet1/extra");
    EXPECT_EQ(404, reply.status);
    EXPECT_NE(std::string::npos, reply.body.find("No page at /config/network/ethernet1/extra"));
    EXPECT_TRUE(WaitForText(server_->logPath(), "root: no page for /network/ethernet1/extra", 5000));
}

TEST_F(UrlLayout, AboutWithTwoSegmentsReachesTheTwoArgumentPage)
{
    server_->writeDeviceFile("/usr/share/common-licenses/pkg-1.0/COPYING", "the licence of pkg\n");
    const HttpReply reply = Get(server_->port(), "/config/settings/about/pkg-1.0/COPYING");
    EXPECT_EQ(200, reply.status);
    EXPECT_NE(std::string::npos, reply.body.find("<pre>the licence of pkg\n</pre>")) << reply.body;
    EXPECT_EQ(404, Get(server_->port(), "/config/settings/about/-pkg/COPYING").status);
}

TEST_F(UrlLayout, ServiceAndRegulatoryPagesAnswer)
{
    EXPECT_NE(std::string::npos, Get(server_->port(), "/config/service").body.find(">Assembly Serial Number</h2>"));
    EXPECT_NE(std::string::npos, Get(server_->port(), "/config/service/assemblysn").body.find(">Assembly Serial Number</h2>"));
    EXPECT_NE(std::string::npos, Get(server_->port(), "/config/regulatory/wifi").body.find(">Wi-Fi Regulatory Domain</h2>"));
}

TEST_F(UrlLayout, RootRedirectsToTheConfigurationPages)
{
    const HttpReply reply = Get(server_->port(), "/");
    EXPECT_EQ(302, reply.status);
    EXPECT_EQ("/config/", reply.header("Location"));
}

TEST_F(UrlLayout, UnknownPathWithoutFileServerIsNotFound)
{
    EXPECT_EQ(404, Get(server_->port(), "/media/css/screen.css").status);
}

TEST_F(UrlLayout, MalformedPercentEncodingIsABadRequestAndTheNextRequestIsServed)
{
    EXPECT_EQ(400, Get(server_->port(), "/config/network/%zz").status);
    EXPECT_EQ(200, Get(server_->port(), "/config/").status);
}

// Form posts need the page's token and this device's origin; pages forbid inline scripts.
#include "Http.h"
#include "Server.h"

#include <gtest/gtest.h>

using namespace panelkit::test;

namespace {

class RequestSafety : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(server_.start()) << server_.log(); }
    Server server_;
};

}  // namespace

TEST_F(RequestSafety, FirstVisitSetsAStrictSameSiteToken)
{
    const HttpReply reply = Get(server_.port(), "/config/network/ethernet1");
    const std::string cookie = reply.header("Set-Cookie");
    EXPECT_EQ(0u, cookie.find("panelkit_csrf=")) << cookie;
    EXPECT_NE(std::string::npos, cookie.find("SameSite=Strict"));
    EXPECT_NE(std::string::npos, cookie.find("HttpOnly"));
}

TEST_F(RequestSafety, PostWithoutTheTokenIsForbidden)
{
    const HttpReply reply = Http(server_.port(), "POST", "/config/network/ethernet1", "a=1",
                                 "application/x-www-form-urlencoded");
    EXPECT_EQ(403, reply.status);
    EXPECT_NE(std::string::npos, reply.body.find("security token")) << reply.body;
}

TEST_F(RequestSafety, PostWithAnotherToken)
{
    const FormToken form = OpenForm(server_.port(), "/config/network/ethernet1");
    const HttpReply reply = Http(server_.port(), "POST", "/config/network/ethernet1",
                                 "_csrf=00000000000000000000000000000000", "application/x-www-form-urlencoded",
                                 form.headers());
    EXPECT_EQ(403, reply.status);
}

TEST_F(RequestSafety, PostWithTheTokenIsServed)
{
    const FormToken form = OpenForm(server_.port(), "/config/network/ethernet1");
    ASSERT_EQ(32u, form.token.size());
    const HttpReply reply = Http(server_.port(), "POST", "/config/network/ethernet1", "_csrf=" + form.token,
                                 "application/x-www-form-urlencoded", form.headers());
    EXPECT_EQ(200, reply.status);
    EXPECT_EQ("", reply.header("Set-Cookie")) << "a known token is kept";
}

TEST_F(RequestSafety, PostFromAnotherOriginIsForbidden)
{
    const FormToken form = OpenForm(server_.port(), "/config/network/ethernet1");
    auto headers = form.headers();
    headers["Origin"] = "http://evil.example";
    EXPECT_EQ(403, Http(server_.port(), "POST", "/config/network/ethernet1", "_csrf=" + form.token,
                        "application/x-www-form-urlencoded", headers)
                       .status);
    headers["Origin"] = "http://127.0.0.1:" + std::to_string(server_.port());
    EXPECT_EQ(200, Http(server_.port(), "POST", "/config/network/ethernet1", "_csrf=" + form.token,
                        "application/x-www-form-urlencoded", headers)
                       .status);
}

TEST_F(RequestSafety, CrossOriginRpcIsForbidden)
{
    const HttpReply reply = Http(server_.port(), "POST", "/async/rpc", R"({"method":"reload","params":[],"id":1})",
                                 "application/json", {{"Origin", "http://evil.example"}});
    EXPECT_EQ(403, reply.status);
    EXPECT_FALSE(server_.work().exists("device/tmp/panelkit_freload_flag"));
}

TEST_F(RequestSafety, PagesForbidInlineScripts)
{
    const HttpReply reply = Get(server_.port(), "/config/");
    const std::string policy = reply.header("Content-Security-Policy");
    EXPECT_NE(std::string::npos, policy.find("script-src 'self'")) << policy;
    EXPECT_EQ(std::string::npos, policy.find("unsafe-inline")) << policy;
    EXPECT_EQ(std::string::npos, reply.body.find("<script type=\"text/javascript\">")) << "no inline script";
}

TEST_F(RequestSafety, RecoveryImageMismatchShowsOnEveryPageUnlessARebootIsPending)
{
    server_.writeDeviceFile("/var/run/.fw_base_status", R"({"status": "fallback_to_wrong_base"})");
    for (const std::string path : {"/config/", "/config/network/wlan", "/config/settings/about"})
        EXPECT_NE(std::string::npos, Get(server_.port(), path).body.find(
                                         "Recovery image mismatch and application could not be started. Upgrade firmware"))
            << path;
    server_.writeDeviceFile("/tmp/panelkit_reboot_flag", "");
    const std::string body = Get(server_.port(), "/config/").body;
    EXPECT_NE(std::string::npos, body.find("Settings have been changed that require a"));
    EXPECT_EQ(std::string::npos, body.find("Recovery image mismatch"));
}

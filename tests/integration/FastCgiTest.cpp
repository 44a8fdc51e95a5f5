// The same pages through lighttpd and FastCGI as through the internal server, byte for byte.
#include "Http.h"
#include "Lighttpd.h"
#include "Server.h"

#include <gtest/gtest.h>

#include <csignal>

using namespace panelkit::test;

namespace {

// Every page view hands out a fresh form token; everything else must match.
std::string WithoutFormToken(std::string body)
{
    const std::string field = "name=\"_csrf\" value=\"";
    const auto at = body.find(field);
    if (at != std::string::npos)
        body.erase(at + field.size(), body.find('"', at + field.size()) - at - field.size());
    return body;
}

class BehindLighttpd : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(fastcgi_.start()) << fastcgi_.log();
        ASSERT_TRUE(http_.start()) << http_.log();
        lighttpd_ = std::make_unique<Lighttpd>(fastcgi_.socket(), std::vector<std::string>{"/config", "/async"});
    }

    Server fastcgi_{"fastcgi"};
    Server http_{"http"};
    std::unique_ptr<Lighttpd> lighttpd_;
};

}  // namespace

TEST_F(BehindLighttpd, PagesAreIdenticalThroughBothFrontEnds)
{
    for (const std::string path : {"/config/", "/config/network/dns_server", "/config/settings/a/b/c",
                                   "/config/network/ethernet1/extra", "/config/settings/about/pkg-1.0/COPYING",
                                   "/config/settings/about/-pkg/COPYING", "/config/service/assemblysn"}) {
        const HttpReply direct = Get(http_.port(), path);
        const HttpReply proxied = Get(lighttpd_->port(), path);
        EXPECT_EQ(direct.status, proxied.status) << path;
        EXPECT_EQ(WithoutFormToken(direct.body), WithoutFormToken(proxied.body)) << path;
        EXPECT_EQ(direct.header("Content-Type"), proxied.header("Content-Type")) << path;
    }
}

TEST_F(BehindLighttpd, FormValuesAndQueriesArriveThroughFastCgi)
{
    const FormToken form = OpenForm(lighttpd_->port(), "/config/network/ethernet1");
    ASSERT_FALSE(form.token.empty());
    const HttpReply reply = Http(lighttpd_->port(), "POST", "/config/network/ethernet1?tab=status",
                                 "_csrf=" + form.token + "&a=1&b=%20x", "application/x-www-form-urlencoded",
                                 form.headers());
    EXPECT_EQ(200, reply.status);
    EXPECT_NE(std::string::npos, reply.body.find(">Ethernet 1 Configuration</h2>"));
}

TEST_F(BehindLighttpd, RequestsWithAndWithoutBodiesFollowingEachOtherAreAllAnswered)
{
    // Each exchange closes its FastCGI connection at once; none may cut off the next.
    const FormToken form = OpenForm(lighttpd_->port(), "/config/network/dns_server");
    ASSERT_FALSE(form.token.empty());
    for (int i = 0; i < 50; ++i) {
        EXPECT_EQ(200, Get(lighttpd_->port(), "/config/network/dns_server").status) << "GET " << i;
        const HttpReply saved = Http(lighttpd_->port(), "POST", "/config/network/dns_server",
                                     "_csrf=" + form.token + "&dnsServer0=10.0.0." + std::to_string(i),
                                     "application/x-www-form-urlencoded", form.headers());
        EXPECT_EQ(200, saved.status) << "POST " << i;
        EXPECT_NE(std::string::npos, saved.body.find("value=\"10.0.0." + std::to_string(i) + "\"")) << "POST " << i;
        const HttpReply refused = Http(lighttpd_->port(), "POST", "/async/rpc", "{\"method\":", "application/json");
        EXPECT_EQ(400, refused.status) << "broken JSON " << i;
        EXPECT_NE(std::string::npos, refused.body.find("not a JSON object")) << refused.body;
    }
}

TEST_F(BehindLighttpd, JsonRpcReloadRebuildsTheServiceBehindLighttpd)
{
    const int pid = fastcgi_.process().pid();
    const HttpReply reply = Rpc(lighttpd_->port(), "/async/rpc", "reload");
    EXPECT_EQ(200, reply.status) << reply.body;
    ASSERT_TRUE(WaitForText(fastcgi_.logPath(), "panelkit ** forced reload **", 10000)) << fastcgi_.log();
    ASSERT_TRUE(fastcgi_.waitReady()) << fastcgi_.log();
    EXPECT_EQ(pid, fastcgi_.process().pid());
    EXPECT_EQ(200, Get(lighttpd_->port(), "/config/").status);
}

TEST_F(BehindLighttpd, WrongRpcParameterCountIsRefusedThroughFastCgi)
{
    const HttpReply reply = Rpc(lighttpd_->port(), "/async/rpc", "reload", R"(["now"])");
    EXPECT_EQ(R"({"error":"Invalid parametres number","id":1,"result":null})", reply.body);
}

TEST_F(BehindLighttpd, OversizedBodyIsRefusedThroughFastCgi)
{
    const HttpReply reply = Http(lighttpd_->port(), "POST", "/config/network/ethernet1",
                                 "a=" + std::string(2 * 1024 * 1024, 'x'), "application/x-www-form-urlencoded");
    EXPECT_EQ(413, reply.status);
    EXPECT_EQ(200, Get(lighttpd_->port(), "/config/").status);
}

TEST_F(BehindLighttpd, MalformedMultipartIsABadRequestThroughFastCgi)
{
    const HttpReply reply = Http(lighttpd_->port(), "POST", "/config/settings/firmware", "garbage",
                                 "multipart/form-data; boundary=b0undary");
    EXPECT_EQ(400, reply.status);
    EXPECT_EQ(200, Get(lighttpd_->port(), "/config/").status);
}

TEST_F(BehindLighttpd, FastCgiShutdownExitsWithStatusZero)
{
    EXPECT_EQ(0, fastcgi_.process().stop(SIGTERM));
    EXPECT_NE(std::string::npos, fastcgi_.log().find("panelkit exit"));
}

// Dispatcher, URL mapper and mount points: whole matches, groups, order, link building.
#include "web/Application.h"
#include "web/Context.h"
#include "web/Dispatcher.h"
#include "web/MountPoint.h"
#include "web/Request.h"
#include "web/Response.h"
#include "web/Service.h"

#include <gtest/gtest.h>

using namespace panelkit::web;

namespace {

struct Recorder {
    std::vector<std::string> calls;
    void Two(std::string a, std::string b) { calls.push_back("two:" + a + "," + b); }
    void None() { calls.push_back("none"); }
};

}  // namespace

TEST(Routing, ExpressionsMustMatchTheWholeUrl)
{
    Dispatcher dispatcher;
    int hits = 0;
    dispatcher.assign("/general", [&] { ++hits; });
    EXPECT_TRUE(dispatcher.dispatch("/general"));
    EXPECT_FALSE(dispatcher.dispatch("/general/x"));
    EXPECT_FALSE(dispatcher.dispatch("x/general"));
    EXPECT_FALSE(dispatcher.dispatch("/general\n"));
    EXPECT_EQ(1, hits);
}

TEST(Routing, GroupsReachTheHandlerAndAnAbsentGroupIsEmpty)
{
    Dispatcher dispatcher;
    std::vector<std::string> seen;
    dispatcher.assign("/a/(\\w+)(/(\\w+))?", [&](std::string x, std::string y) { seen = {x, y}; }, 1, 3);
    ASSERT_TRUE(dispatcher.dispatch("/a/one/two"));
    EXPECT_EQ((std::vector<std::string>{"one", "two"}), seen);
    ASSERT_TRUE(dispatcher.dispatch("/a/one"));
    EXPECT_EQ((std::vector<std::string>{"one", ""}), seen);
    dispatcher.assign("/(\\d)(\\d)(\\d)(\\d)", [&](std::string a, std::string b, std::string c, std::string d) {
        seen = {d, c, b, a};
    }, 1, 2, 3, 4);
    ASSERT_TRUE(dispatcher.dispatch("/1234"));
    EXPECT_EQ((std::vector<std::string>{"4", "3", "2", "1"}), seen);
}

TEST(Routing, FirstAssignedMatchWins)
{
    Dispatcher dispatcher;
    std::string winner;
    dispatcher.assign("/x.*", [&] { winner = "first"; });
    dispatcher.assign("/xy", [&] { winner = "second"; });
    ASSERT_TRUE(dispatcher.dispatch("/xy"));
    EXPECT_EQ("first", winner);
}

TEST(Routing, MemberFunctionsBindWithTheirGroups)
{
    Dispatcher dispatcher;
    Recorder recorder;
    dispatcher.assign("/about/([a-z]+)/([a-z]+)", &Recorder::Two, &recorder, 2, 1);
    dispatcher.assign("/?", &Recorder::None, &recorder);
    ASSERT_TRUE(dispatcher.dispatch("/about/pkg/copying"));
    ASSERT_TRUE(dispatcher.dispatch(""));
    ASSERT_TRUE(dispatcher.dispatch("/"));
    EXPECT_EQ((std::vector<std::string>{"two:copying,pkg", "none", "none"}), recorder.calls);
}

TEST(Routing, MountPointsSelectTheirGroup)
{
    std::string url;
    const MountPoint config("/config(.*)", 1);
    ASSERT_TRUE(config.match("/config/network/ethernet1", url));
    EXPECT_EQ("/network/ethernet1", url);
    ASSERT_TRUE(config.match("/config", url));
    EXPECT_EQ("", url);
    EXPECT_FALSE(config.match("/static/config", url));
    const MountPoint whole("/rpc(.*)", 0);
    ASSERT_TRUE(whole.match("/rpc/x", url));
    EXPECT_EQ("/rpc/x", url);
    const MountPoint optional("/a(/b)?", 1);
    ASSERT_TRUE(optional.match("/a", url));
    EXPECT_EQ("", url);
}

TEST(Routing, PrefixesAreNotAnchoredAtASegment)
{
    std::string url;
    const MountPoint config("/config(.*)", 1);
    ASSERT_TRUE(config.match("/configuration", url));
    EXPECT_EQ("uration", url);
}

class Tree : public ::testing::Test {
protected:
    Tree() : service_(Settings{}), root_(service_)
    {
        root_.mapper().root("/config");
        settings_ = &root_.attach(std::make_unique<Application>(service_), "settings", "/settings{1}",
                                  "/settings((?:/[^/]*){0,3}$)", 1);
        settings_->mapper().assign("/");
        settings_->mapper().assign("reboot", "/reboot");
        settings_->mapper().assign("about2", "/about/{1}/{2}");
        network_ = &root_.attach(std::make_unique<Application>(service_), "network", "/network{1}",
                                 "/network(/[^/]*$)?", 1);
        network_->mapper().assign("ethernet1", "/ethernet1");
    }

    Service service_;
    Application root_;
    Application* settings_;
    Application* network_;
};

TEST_F(Tree, AbsoluteLinksGoThroughTheChildrensNames)
{
    EXPECT_EQ("/config/settings/reboot", root_.url("/settings/reboot"));
    EXPECT_EQ("/config/network/ethernet1", root_.url("/network/ethernet1"));
    EXPECT_EQ("/config/network/ethernet1", settings_->url("/network/ethernet1"));
}

TEST_F(Tree, DefaultMappingAndRelativeLinks)
{
    EXPECT_EQ("/config/settings/", root_.url("/settings"));
    EXPECT_EQ("/config/settings/reboot", settings_->url("reboot"));
    EXPECT_EQ("/config/network", root_.url("/network")) << "a child without a default maps to its bare prefix";
    EXPECT_EQ("/config", root_.url("/"));
}

TEST_F(Tree, ParametersFillThePattern)
{
    EXPECT_EQ("/config/settings/about/pkg-1.0/COPYING", root_.url("/settings/about2", {"pkg-1.0", "COPYING"}));
    EXPECT_THROW(root_.url("/settings/about2", {"only-one"}), Error);
}

TEST_F(Tree, UnknownNamesAreErrors)
{
    EXPECT_THROW(root_.url("/settings/nothing"), Error);
    EXPECT_THROW(root_.url("/nowhere/reboot"), Error);
    EXPECT_THROW(root_.url("/settings/reboot/extra"), Error);
}

TEST_F(Tree, RepeatedLinksComeOutTheSameAndAFailedOneIsNotRemembered)
{
    EXPECT_THROW(root_.url("/service/assemblysn"), Error);
    EXPECT_EQ("/config/settings/reboot", root_.url("/settings/reboot"));
    EXPECT_EQ("/config/settings/reboot", root_.url("/settings/reboot"));
    auto& service = root_.attach(std::make_unique<Application>(service_), "service", "/service{1}", "/service(/.*)?", 1);
    service.mapper().assign("assemblysn", "/assemblysn");
    EXPECT_EQ("/config/service/assemblysn", root_.url("/service/assemblysn"));
    EXPECT_EQ("/config/settings/reboot", root_.url("/settings/reboot"));
}

TEST_F(Tree, AttachedChildrenReceiveTheirPartOfTheUrl)
{
    std::string seen;
    settings_->dispatcher().assign("/a/b/c", [&] { seen = "abc"; });
    Request request;
    request.setHead("GET", "/config/settings/a/b/c", "", "127.0.0.1");
    Response response;
    Context context(request, response);
    root_.main("/settings/a/b/c");
    EXPECT_EQ("abc", seen);
    root_.main("/network/ethernet1/extra");
    EXPECT_EQ(404, response.status());
    EXPECT_NE(std::string::npos, response.body().find("No page at /config/settings/a/b/c"));
}

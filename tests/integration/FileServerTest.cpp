// Static media served by the internal server when no mount point takes the path.
#include "Http.h"
#include "Server.h"

#include <gtest/gtest.h>

using namespace panelkit::test;

namespace {

class StaticMedia : public ::testing::Test {
protected:
    void SetUp() override
    {
        server_.work().write("media/css/screen.css", "body { color: black; }\n");
        server_.work().write("media/js/onload.js", "var x = 1;\n");
        server_.config()["file_server"]["enable"] = true;
        server_.config()["file_server"]["document_root"] = server_.work() / "media";
        ASSERT_TRUE(server_.start()) << server_.log();
    }
    Server server_;
};

}  // namespace

TEST_F(StaticMedia, FilesAreServedWithTheirMimeType)
{
    const HttpReply css = Get(server_.port(), "/css/screen.css");
    EXPECT_EQ(200, css.status);
    EXPECT_EQ("body { color: black; }\n", css.body);
    EXPECT_EQ("text/css; charset=utf-8", css.header("Content-Type"));
    EXPECT_EQ("application/javascript; charset=utf-8", Get(server_.port(), "/js/onload.js").header("Content-Type"));
}

TEST_F(StaticMedia, PathsLeavingTheDocumentRootAreNotFound)
{
    EXPECT_EQ(404, Get(server_.port(), "/../panelkit.json").status);
    EXPECT_EQ(404, Get(server_.port(), "/css/%2e%2e/%2e%2e/panelkit.json").status);
    EXPECT_EQ(404, Get(server_.port(), "/css").status);
    EXPECT_EQ(404, Get(server_.port(), "/css/missing.css").status);
}

TEST_F(StaticMedia, MountedPrefixesWinOverFiles)
{
    server_.work().write("media/config/index.html", "not a page");
    EXPECT_NE(std::string::npos, Get(server_.port(), "/config/").body.find(">General Device Configuration</h2>"));
}

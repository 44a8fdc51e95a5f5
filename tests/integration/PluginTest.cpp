// Plugins found on the mounted volumes: loading, order, failures, branding, media, and reloads.
#include "Http.h"
#include "Server.h"

#include <gtest/gtest.h>

#include <Poco/File.h>

using namespace panelkit::test;

namespace {

std::string Library(const std::string& variant)
{
    return std::string(PANELKIT_TEST_PLUGINS) + "/" + variant + "/" + variant + "-panelkit-plugin.so";
}

class Plugins : public ::testing::Test {
protected:
    Plugins() { server_.env()["MOUNT_DIR"] = mountDir(); }

    std::string mountDir() const { return server_.work() / "apps"; }

    // Puts a built library on a volume under the given file name.
    void Install(const std::string& volume, const std::string& variant, const std::string& fileName)
    {
        const std::string folder = mountDir() + "/" + volume + "/var/www/panelkit/plugins";
        Poco::File(folder).createDirectories();
        Poco::File(Library(variant)).copyTo(folder + "/" + fileName);
    }

    void WritePluginFile(const std::string& volume, const std::string& name, const std::string& content)
    {
        server_.work().write("apps/" + volume + "/var/www/panelkit/plugins/" + name, content);
    }

    std::string Page(const std::string& path = "/config/") { return Get(server_.port(), path).body; }

    static bool Has(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

    Server server_;
};

}  // namespace

TEST_F(Plugins, WithoutMountDirNothingIsLoadedAndTheWarningIsLogged)
{
    server_.env()["MOUNT_DIR"] = "";
    Install("vol1", "alpha", "alpha-panelkit-plugin.so");
    ASSERT_TRUE(server_.start()) << server_.log();
    const std::string page = Page();
    EXPECT_TRUE(Has(server_.log(), "$MOUNT_DIR environemt not set, skipping loading plugins"));
    EXPECT_FALSE(Has(page, "Alpha"));
    EXPECT_TRUE(Has(page, "<div class=\"nav\">Network</div>"));
    EXPECT_EQ(404, Get(server_.port(), "/config/alpha/").status);
}

TEST_F(Plugins, AnUpgradeInProgressLoadsNothingAndWarnsNothing)
{
    Install("vol1", "alpha", "alpha-panelkit-plugin.so");
    server_.work().write("device/tmp/fwtool_6v1Znb.lock/held", "");
    ASSERT_TRUE(server_.start()) << server_.log();
    Page();
    EXPECT_FALSE(Has(server_.log(), "search plugins"));
    EXPECT_FALSE(Has(server_.log(), "$MOUNT_DIR environemt not set"));
    EXPECT_EQ(404, Rpc(server_.port(), "/async/alpha", "label").status);
}

TEST_F(Plugins, APluginAddsMenusPagesAndAnAsynchronousApplication)
{
    Install("vol1", "alpha", "alpha-panelkit-plugin.so");
    ASSERT_TRUE(server_.start()) << server_.log();
    const std::string page = Page();
    EXPECT_LT(page.find("<div class=\"nav\">Alpha Group</div>"), page.find("<div class=\"nav\">Network</div>"));
    EXPECT_LT(page.find("<div class=\"nav\">Settings</div>"), page.find("<div class=\"nav\">Alpha End</div>"));
    EXPECT_TRUE(Has(Page("/config/alpha/"), "config_page_title\">Alpha page</h2>"));
    EXPECT_EQ(R"({"error":null,"id":1,"result":"Alpha"})", Rpc(server_.port(), "/async/alpha", "label").body);
    EXPECT_TRUE(Has(server_.log(), "load plugin OK: " + mountDir() + "/vol1/var/www/panelkit/plugins/alpha-panelkit-plugin.so"));
}

TEST_F(Plugins, TheSameFileNameOnTwoVolumesLoadsBothInVolumeOrder)
{
    Install("vol2", "gamma2", "same-panelkit-plugin.so");
    Install("vol1", "alpha", "same-panelkit-plugin.so");
    ASSERT_TRUE(server_.start()) << server_.log();
    const std::string page = Page();
    const std::string log = server_.log();
    const auto first = log.find("load plugin OK: " + mountDir() + "/vol1/");
    const auto second = log.find("load plugin OK: " + mountDir() + "/vol2/");
    ASSERT_NE(std::string::npos, first) << log;
    ASSERT_NE(std::string::npos, second) << log;
    EXPECT_LT(first, second);
    EXPECT_LT(page.find("Alpha Group"), page.find("Gamma two Group"));
}

TEST_F(Plugins, ALibraryWithoutTheFactoryIsLoggedAndLeftOut)
{
    Install("vol1", "nofactory", "broken-panelkit-plugin.so");
    Install("vol1", "alpha", "zeta-panelkit-plugin.so");
    ASSERT_TRUE(server_.start()) << server_.log();
    Page();
    const std::string log = server_.log();
    EXPECT_TRUE(Has(log, "load plugin: ")) << log;
    EXPECT_TRUE(Has(log, "undefined symbol: create_panelkit_plugin")) << log;
    EXPECT_FALSE(Has(log, "load plugin OK: " + mountDir() + "/vol1/var/www/panelkit/plugins/broken"));
    EXPECT_TRUE(Has(log, "load plugin OK: " + mountDir() + "/vol1/var/www/panelkit/plugins/zeta"));
}

TEST_F(Plugins, ThePluginWhoseAttachFailsSparesTheOthers)
{
    Install("vol1", "beta", "beta-panelkit-plugin.so");
    Install("vol1", "alpha", "gamma-panelkit-plugin.so");
    ASSERT_TRUE(server_.start()) << server_.log();
    EXPECT_TRUE(Has(Page("/config/alpha/"), "Alpha page"));
    EXPECT_EQ(404, Get(server_.port(), "/config/beta/").status);
    EXPECT_TRUE(Has(Page(), "<a id=\"menu_Beta\" href=\"\">Beta</a>")) << "its menu entry stays, without a link";
    EXPECT_TRUE(Has(server_.log(), "Failed to attach synchronous app in plugin: vol1/beta-panelkit-plugin.so"));
}

TEST_F(Plugins, TheLastBrandingFileByNameSuppliesAllSixTexts)
{
    server_.config()["panelkit"]["branding"]["footer_right_text"] = "configured footer";
    WritePluginFile("vol1", "a-branding.json",
                    R"({"branding": {"banner_text": "First", "footer_left_text": "first left", "window_text": "First window"}})");
    WritePluginFile("vol2", "z-branding.json", R"({"branding": {"banner_text": "Last"}})");
    WritePluginFile("vol2", "bad-branding.json", "{\n\"branding\": \n");
    ASSERT_TRUE(server_.start()) << server_.log();
    const std::string page = Page();
    EXPECT_TRUE(Has(page, "<h1>Last</h1>"));
    EXPECT_TRUE(Has(page, "<title></title>"));
    EXPECT_TRUE(Has(page, "<div class=\"left_footer\"></div><div class=\"right_footer\"></div>"));
    EXPECT_TRUE(Has(server_.log(), "load branding ERROR, line: 3 in file " + mountDir() + "/vol2/var/www/panelkit/plugins/bad-branding.json"))
        << server_.log();
}

TEST_F(Plugins, MediaOfTheVolumesIsLinkedAndServed)
{
    server_.config()["panelkit"]["plugin_media_root"] = "/plugins";
    WritePluginFile("vol1", "media/head/b.css", "body { }\n");
    WritePluginFile("vol2", "media/head/a.css", "p { }\n");
    WritePluginFile("vol1", "media/head/tool.js", "var tool = 1;\n");
    ASSERT_TRUE(server_.start()) << server_.log();
    const std::string page = Page();
    EXPECT_LT(page.find("href=\"/plugins/vol2/head/a.css\""), page.find("href=\"/plugins/vol1/head/b.css\""));
    EXPECT_TRUE(Has(page, "<script type=\"text/javascript\" src=\"/plugins/vol1/head/tool.js\">"));
    const HttpReply css = Get(server_.port(), "/plugins/vol2/head/a.css");
    EXPECT_EQ(200, css.status);
    EXPECT_EQ("p { }\n", css.body);
    EXPECT_EQ(404, Get(server_.port(), "/plugins/../vol2/head/a.css").status);
    EXPECT_EQ(404, Get(server_.port(), "/plugins/vol2/../../../device/tmp").status);
}

TEST_F(Plugins, AfterReloadAReplacedLibraryServesAndARemovedOnesEntriesAreGone)
{
    Install("vol1", "gamma1", "gamma-panelkit-plugin.so");
    Install("vol2", "alpha", "alpha-panelkit-plugin.so");
    ASSERT_TRUE(server_.start()) << server_.log();
    EXPECT_TRUE(Has(Page(), "Gamma one Group"));
    EXPECT_TRUE(Has(Page(), "Alpha Group"));

    Poco::File(mountDir() + "/vol2").remove(true);
    const std::string installed = mountDir() + "/vol1/var/www/panelkit/plugins/gamma-panelkit-plugin.so";
    Poco::File(installed).remove();
    Poco::File(Library("gamma2")).copyTo(installed);
    EXPECT_EQ(200, Rpc(server_.port(), "/async/rpc", "reload").status);
    ASSERT_TRUE(WaitForText(server_.logPath(), "panelkit ** forced reload **", 10000));
    ASSERT_TRUE(server_.waitReady());
    const std::string page = Page();
    EXPECT_TRUE(Has(page, "Gamma two Group")) << page;
    EXPECT_FALSE(Has(page, "Gamma one"));
    EXPECT_FALSE(Has(page, "Alpha"));
    EXPECT_EQ(R"({"error":null,"id":1,"result":"Gamma two"})", Rpc(server_.port(), "/async/gamma", "label").body);
    EXPECT_TRUE(Has(server_.log(), "Unloaded plugin OK"));
}

TEST_F(Plugins, TheExamplePluginsPageSavesItsKey)
{
    Poco::File(server_.devicePath("/var/lib/pardb")).createDirectories();
    const std::string folder = mountDir() + "/example/var/www/panelkit/plugins";
    Poco::File(folder).createDirectories();
    Poco::File(PANELKIT_EXAMPLE_PLUGIN).copyTo(folder + "/example-panelkit-plugin.so");
    ASSERT_TRUE(server_.start()) << server_.log();
    const FormToken form = OpenForm(server_.port(), "/config/example/");
    const HttpReply saved = Http(server_.port(), "POST", "/config/example/", "_csrf=" + form.token + "&site=North+Pit&save=Save",
                                 "application/x-www-form-urlencoded", form.headers());
    EXPECT_TRUE(Has(saved.body, "Success: The form values were saved.")) << saved.body;
    EXPECT_TRUE(Has(Page("/config/example/"), "value=\"North Pit\""));
    const std::string help = Page("/config/example/help");
    EXPECT_TRUE(Has(help, ">Example Help</h2>")) << help;
    EXPECT_TRUE(Has(help, "href=\"/config/example/help\">Example Help</a>")) << help;
    EXPECT_EQ(R"({"error":null,"id":1,"result":{"plugin":"example","site":"North Pit"}})",
              Rpc(server_.port(), "/async/example", "example_status").body);
    const HttpReply refused = Http(server_.port(), "POST", "/config/example/", "site=Elsewhere&save=Save",
                                   "application/x-www-form-urlencoded", form.headers());
    EXPECT_EQ(403, refused.status);
    EXPECT_TRUE(Has(Page("/config/example/"), "value=\"North Pit\"")) << "a refused post writes nothing";
}

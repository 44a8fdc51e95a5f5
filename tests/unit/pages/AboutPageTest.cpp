// The About page: the packages' licence files as listed, one file's text on request, and the names the routes refuse.
#include "PageFixture.h"

#include <Poco/File.h>

using namespace panelkit::test;

namespace {

class AboutPage : public PageFixture {
};

const char kAbout[] = "/config/settings/about";
const char kLicences[] = "/usr/share/common-licenses";

// The file names of a package's row, in the order listed.
std::vector<std::string> Listed(const std::string& page, const std::string& package)
{
    std::vector<std::string> names;
    const auto row = page.find("<tr id=\"" + package + "\">");
    if (row == std::string::npos)
        return names;
    const auto end = page.find("</tr>", row);
    const std::string link = "<a class=\"ossnav\" href=\"";
    for (auto at = page.find(link, row); at < end; at = page.find(link, at + 1)) {
        const auto text = page.find("\">", at) + 2;
        names.push_back(page.substr(text, page.find("</a>", text) - text));
    }
    return names;
}

// The text in the pre block of a package's row, "" when it has none.
std::string Opened(const std::string& page, const std::string& package)
{
    const auto row = page.find("<tr id=\"" + package + "\">");
    const auto pre = page.find("<pre>", row);
    if (row == std::string::npos || pre == std::string::npos || pre > page.find("</tr>", row))
        return "";
    return page.substr(pre + 5, page.find("</pre>", pre) - pre - 5);
}

}  // namespace

TEST_F(AboutPage, ListsEveryPackageWithItsFilesOrderedWithoutRegardToCase)
{
    const auto reply = Get(kAbout);
    EXPECT_EQ(200, reply.status);
    EXPECT_TRUE(Has(reply.body, "<h2 id=\"config_page_title\">Open Source Software  Notices</h2>")) << reply.body;
    EXPECT_EQ((std::vector<std::string>{"COPYING", "exceptions", "NOTICE"}), Listed(reply.body, "libfieldbus-1.2"));
    EXPECT_EQ((std::vector<std::string>{"COPYING"}), Listed(reply.body, "panelkit-demo"));
    EXPECT_EQ((std::vector<std::string>{"COPYING", "LICENSE"}), Listed(reply.body, "sitelink-0.9"));
    EXPECT_LT(reply.body.find("<tr id=\"libfieldbus-1.2\"><td><b>libfieldbus-1.2</b><ul class=\"ossnav\">"),
              reply.body.find("<tr id=\"panelkit-demo\">"));
    EXPECT_TRUE(Has(reply.body, "<li><i><a class=\"ossnav\" href=\"/config/settings/about/libfieldbus-1.2/NOTICE"
                                "#libfieldbus-1.2\">NOTICE</a></i></li>"))
        << reply.body;
    EXPECT_FALSE(Has(reply.body, "<pre>"));
}

TEST_F(AboutPage, APackageHoldingOnlyHiddenFilesIsNotListed)
{
    WriteDeviceFile(std::string(kLicences) + "/folders-only-2.0/doc/COPYING", "a licence one folder down\n");
    const std::string body = Get(kAbout).body;
    EXPECT_TRUE(Has(body, "<tr id=\"panelkit-demo\">")) << body;
    EXPECT_FALSE(Has(body, "hidden-only-1.0")) << body;
    EXPECT_FALSE(Has(body, ".placeholder"));
    EXPECT_FALSE(Has(body, "folders-only-2.0")) << "a folder in a package is not a licence file";
}

TEST_F(AboutPage, AFileAskedForInOtherCaseShowsTheStoredFilesText)
{
    const std::string body = Get(std::string(kAbout) + "/panelkit-demo/copying").body;
    EXPECT_EQ("panelkit demo licence\n\nPermission is granted to use, copy and change this simulated component\n"
              "for testing the web configuration application.\n",
              Opened(body, "panelkit-demo"))
        << body;
    EXPECT_TRUE(Has(body, "#panelkit-demo\">COPYING</a></i><pre>panelkit demo licence")) << body;
    EXPECT_EQ("", Opened(body, "libfieldbus-1.2"));
}

TEST_F(AboutPage, ALinkedLicenceShowsTheTextItLinksTo)
{
    const std::string body = Get(std::string(kAbout) + "/sitelink-0.9/LICENSE").body;
    EXPECT_TRUE(Has(body, "#sitelink-0.9\">LICENSE</a></i><pre>site link tools licence\n")) << body;
}

TEST_F(AboutPage, AListedFileThatIsGoneShowsItCannotBeAccessed)
{
    ASSERT_EQ((std::vector<std::string>{"COPYING", "LICENSE"}), Listed(Get(kAbout).body, "sitelink-0.9"));
    // The link stays listed; what it pointed to is gone by the time it is asked for.
    Poco::File(DevicePath(std::string(kLicences) + "/sitelink-0.9/COPYING")).remove();
    const std::string body = Get(std::string(kAbout) + "/sitelink-0.9/LICENSE").body;
    EXPECT_EQ("Failed to access &quot;/usr/share/common-licenses/sitelink-0.9/LICENSE&quot;", Opened(body, "sitelink-0.9"))
        << body;
}

TEST_F(AboutPage, TwoNamesDifferingOnlyInCaseAreOneFile)
{
    WriteDeviceFile(std::string(kLicences) + "/twin-1.0/License", "first\n");
    WriteDeviceFile(std::string(kLicences) + "/twin-1.0/LICENSE", "second\n");
    EXPECT_EQ(1u, Listed(Get(kAbout).body, "twin-1.0").size());
}

TEST_F(AboutPage, APackageOrFileNotListedLeavesThePlainList)
{
    for (const std::string path : {"/nosuch-1.0/COPYING", "/panelkit-demo/NOTICE", "/hidden-only-1.0/placeholder"}) {
        const auto reply = Get(kAbout + path);
        EXPECT_EQ(200, reply.status) << path;
        EXPECT_EQ((std::vector<std::string>{"COPYING"}), Listed(reply.body, "panelkit-demo")) << path;
        EXPECT_FALSE(Has(reply.body, "<pre>")) << path << ": " << reply.body;
    }
}

TEST_F(AboutPage, LicenceTextIsEscaped)
{
    WriteDeviceFile(std::string(kLicences) + "/markup-1.0/COPYING", "<script>alert(1)</script> & co\n");
    const std::string body = Get(std::string(kAbout) + "/markup-1.0/COPYING").body;
    EXPECT_EQ("&lt;script&gt;alert(1)&lt;/script&gt; &amp; co\n", Opened(body, "markup-1.0")) << body;
}

TEST_F(AboutPage, WithoutALicenceFolderTheListIsEmpty)
{
    Poco::File(DevicePath(kLicences)).remove(true);
    const auto reply = Get(kAbout);
    EXPECT_EQ(200, reply.status);
    EXPECT_TRUE(Has(reply.body, "<table class=\"oss_notices\"></table>")) << reply.body;
}

TEST_F(AboutPage, NamesThatCouldLeaveTheLicenceFolderAreRefused)
{
    for (const std::string path : {"/../COPYING", "/panelkit-demo/..", "/../../etc/version", "/panelkit-demo/.hidden",
                                   "/-pkg/COPYING", "/panelkit-demo/COPYING/extra", "/panelkit-demo/%2e%2e",
                                   "/..%2f..%2fetc/version", "/panelkit-demo/_COPYING"}) {
        const auto reply = Get(kAbout + path);
        EXPECT_EQ(404, reply.status) << path << ": " << reply.body;
        EXPECT_FALSE(Has(reply.body, "<pre>")) << path;
    }
}

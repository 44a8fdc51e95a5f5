// The layout views rendered with the real controllers: alerts, messages, banner, menus, footer, rows, scripts.
#include "PageFixture.h"
#include "TempDir.h"
#include "apps/Network.h"
#include "apps/Settings.h"
#include "page/Content.h"
#include "pages/Reboot.h"
#include "util/DevicePath.h"
#include "views/BaseForm.h"
#include "views/Registry.h"
#include "web/Context.h"
#include "web/Error.h"
#include "web/Request.h"
#include "web/Response.h"
#include "web/Service.h"
#include "web/widgets/Text.h"

#include <gtest/gtest.h>

using namespace panelkit;

namespace {


class Layout : public ::testing::Test {
protected:
    Layout() : service_(web::Settings(test::PageConfig("media"))), context_(request_, response_)
    {
        root_.write("tmp/.keep", "");
        util::SetDeviceRoot(root_.path());
        tree_.mapper().root("/config");
        tree_.attach(std::make_unique<apps::Network>(service_), "network", "/network{1}", "/network(/[^/]*$)?", 1);
        app_ = &tree_.attach(std::make_unique<apps::Settings>(service_), "settings", "/settings{1}",
                             "/settings((?:/[^/]*){0,3}$)", 1);
        request_.setHead("GET", "/config/network/dns_server", "", "127.0.0.1");
    }

    std::string Render(const std::string& view, data::Base& content)
    {
        std::ostringstream out;
        views::Registry::Instance().Render(view, out, content, *app_);
        return out.str();
    }

    std::string Prepared(data::Base& content, const std::string& view = "Base")
    {
        app_->Prepare(content);
        return Render(view, content);
    }

    static bool Has(const std::string& html, const std::string& part) { return html.find(part) != std::string::npos; }

    test::TempDir root_;
    web::Service service_;
    web::Application tree_{service_};
    apps::Base* app_ = nullptr;
    web::Request request_;
    web::Response response_;
    web::Context context_;
};

}  // namespace

TEST_F(Layout, FreshContentRendersNoMessageAlertOrExtraFiles)
{
    data::Base content;
    const std::string html = Render("Base", content);
    EXPECT_FALSE(Has(html, "form_result_msg"));
    EXPECT_FALSE(Has(html, "alertsBox"));
    EXPECT_TRUE(Has(html, "<h4>No menus</h4>"));
    EXPECT_TRUE(Has(html, "<script type=\"application/json\" id=\"panelkit_page_data\">{}</script>"));
}

TEST_F(Layout, MenusLinkThroughTheMapperAndMarkTheCurrentPage)
{
    data::Base content;
    const std::string html = Prepared(content);
    EXPECT_TRUE(Has(html, "<div class=\"nav\">Network</div>"));
    EXPECT_TRUE(Has(html, "<li class=\" selected\"><a id=\"menu_DNS_Server\" href=\"/config/network/dns_server\">DNS Server</a>"));
    EXPECT_TRUE(Has(html, "<li class=\"\"><a id=\"menu_Port_Forwarding\" href=\"/config/network/port_forwarding\">"));
    EXPECT_TRUE(Has(html, "href=\"/config/settings/about\">About</a>"));
    EXPECT_LT(html.find("menu_UHF_Channels"), html.find("menu_General"));
}

TEST_F(Layout, PersistentCustomMessageCarriesItsClasses)
{
    data::Base content;
    content.message = data::Message::Custom("Please wait", "notice", true);
    EXPECT_TRUE(Has(Render("Base", content), "<div class=\"notice static form_result_msg\">Please wait</div>"));
    content.message = data::Message::OK("<b>done</b>");
    EXPECT_TRUE(Has(Render("Base", content), "<div class=\"success form_result_msg\">&lt;b&gt;done&lt;/b&gt;</div>"));
}

TEST_F(Layout, ClearedOkMessageStillRendersItsBox)
{
    data::Base content;
    content.message = data::Message::SaveOK();
    content.message.Clear();
    EXPECT_TRUE(Has(Render("Base", content), "<div class=\"success form_result_msg\"></div>"));
}

TEST_F(Layout, RebootAlertWinsOverTheRecoveryAlertAndMovesTheBanner)
{
    data::Base content;
    content.reboot_required = true;
    content.fw_base_alert = 2;
    const std::string html = Render("Base", content);
    EXPECT_TRUE(Has(html, "Settings have been changed that require a <a href=\"/config/settings/reboot\">Reboot</a>"));
    EXPECT_FALSE(Has(html, "Recovery image mismatch"));
    EXPECT_TRUE(Has(html, "\"repositionBanner\":true"));
}

TEST_F(Layout, RecoveryAlertsHaveTheirTexts)
{
    data::Base content;
    content.fw_base_alert = 1;
    EXPECT_TRUE(Has(Render("Base", content), ">Recovery image is not up to date. Upgrade Firmware</div>"));
    content.fw_base_alert = 2;
    EXPECT_TRUE(Has(Render("Base", content),
                    ">Recovery image mismatch and application could not be started. Upgrade firmware</div>"));
}

TEST_F(Layout, BannerHtmlReplacesTheWholeDefaultBanner)
{
    data::Base content;
    content.branding.banner_text = "Field Router";
    EXPECT_TRUE(Has(Render("Base", content), "<div id=\"banner_middle\"><h1>Field Router</h1></div>"));
    content.branding.banner_html = "<img src=\"/logo.png\" />";
    const std::string html = Render("Base", content);
    EXPECT_TRUE(Has(html, "<div id=\"banner\"><img src=\"/logo.png\" /></div>"));
    EXPECT_FALSE(Has(html, "Field Router"));
}

TEST_F(Layout, LeftFooterIsMarkupAndRightFooterIsText)
{
    data::Base content;
    content.branding.footer_left_text = "<b>left</b>";
    content.branding.footer_right_text = "<b>right</b>";
    const std::string html = Render("Base", content);
    EXPECT_TRUE(Has(html, "<div class=\"left_footer\"><b>left</b></div>"));
    EXPECT_TRUE(Has(html, "<div class=\"right_footer\">&lt;b&gt;right&lt;/b&gt;</div>"));
}

TEST_F(Layout, TitleAndWindowTextAreEscaped)
{
    data::Base content;
    content.title = "<script>alert(1)</script>";
    content.branding.window_text = "A & B";
    const std::string html = Render("Base", content);
    EXPECT_TRUE(Has(html, "<h2 id=\"config_page_title\">&lt;script&gt;alert(1)&lt;/script&gt;</h2>"));
    EXPECT_TRUE(Has(html, "<title>A &amp; B</title>"));
}

TEST_F(Layout, ScriptDataCannotCloseItsElement)
{
    data::BaseTabbed content;
    content.selected_tab = 1;
    content.read_only = true;
    const std::string html = Render("BaseTabbed", content);
    EXPECT_TRUE(Has(html, "{\"readOnly\":true,\"tabs\":{\"selected\":1}}"));
}

TEST_F(Layout, MediaRootIsNormalisedAndPluginRootEndsInSlash)
{
    data::Base content;
    app_->Prepare(content);
    EXPECT_EQ("/media", content.media_root);
    EXPECT_EQ("/", content.app_media_root);
    const std::string html = Render("Base", content);
    EXPECT_TRUE(Has(html, "href=\"/media/css/screen.css?rev="));
    EXPECT_TRUE(Has(html, "src=\"/media/js/onload.js?rev="));
    EXPECT_TRUE(Has(html, "href=\"/media/images/Brenvik.ico\""));
}

TEST_F(Layout, RecoveryStatusFileGivesTheAlert)
{
    data::Base content;
    root_.write("var/run/.fw_base_status", R"({"status": "fallback_to_wrong_base"})");
    EXPECT_EQ(2, app_->GetFWBaseAlertStatus());
    root_.write("var/run/.fw_base_status", R"({"status": "mismatched_recovery_base"})");
    EXPECT_EQ(1, app_->GetFWBaseAlertStatus());
    for (const char* bad : {"not json", "[1,2]", R"({"status": 5})", R"({"other": "x"})", ""}) {
        root_.write("var/run/.fw_base_status", bad);
        EXPECT_EQ(0, app_->GetFWBaseAlertStatus()) << bad;
    }
}

TEST_F(Layout, LowerCasePostIsNeitherGetNorPost)
{
    request_.setHead("post", "/config/x", "", "127.0.0.1");
    EXPECT_FALSE(app_->HttpGet());
    EXPECT_FALSE(app_->HttpPost());
    request_.setHead("PUT", "/config/x", "", "127.0.0.1");
    EXPECT_TRUE(app_->HttpPut());
}

TEST_F(Layout, FailingWidgetRowsCarryTheErrorClassAndText)
{
    struct Form : web::Form {
        web::widgets::Text name;
        Form()
        {
            name.message("Device Name");
            name.id("cfg_grl_device_name");
            name.name("name");
            name.error_message("Invalid length; minimum 1, maximum 64");
            name.valid(false);
            add(name);
        }
    } form;
    data::Base content;
    content.csrf_token = "0123456789abcdef0123456789abcdef";
    std::ostringstream out;
    views::BaseForm view(out, content, *app_);
    view.render_form(form);
    const std::string html = out.str();
    EXPECT_TRUE(Has(html, "<input type=\"hidden\" name=\"_csrf\" value=\"0123456789abcdef0123456789abcdef\" />"));
    EXPECT_TRUE(Has(html, "<tr class=\"cppcms_error_msg\"><th><label for=\"cfg_grl_device_name\">Device Name</label>"));
    EXPECT_TRUE(Has(html, "<span class=\"cppcms_error_msg\">Invalid length; minimum 1, maximum 64</span>"));
    std::ostringstream hidden;
    views::BaseForm(hidden, content, *app_).render_hidden_widget(form.name, "row_name");
    EXPECT_TRUE(Has(hidden.str(), "<tr id=\"row_name\" class=\"hiddenOnLoad cppcms_error_msg\">"));
}

TEST_F(Layout, WaitRebootHandsTheWaitToItsScript)
{
    const page::Page reboot = pages::Reboot();
    page::Content content(reboot);
    content.facts = {{"lan_ipaddr", "192.168.1.1"}, {"pardb_lan_ipaddr", "10.0.0.1"}};
    const std::string html = Render("WaitReboot", content);
    EXPECT_TRUE(Has(html, "\"rebootWaitSec\":100"));
    EXPECT_TRUE(Has(html, "/js/waitreboot.js?rev="));
    EXPECT_TRUE(Has(html, "<div id=\"lan_ipaddr\" class=\"hidden\">192.168.1.1</div>"));
    EXPECT_TRUE(Has(html, "<div id=\"pardb_lan_ipaddr\" class=\"hidden\">10.0.0.1</div>"));
}

TEST_F(Layout, ViewsCheckTheirContentType)
{
    data::Base plain;
    EXPECT_THROW(Render("WaitReboot", plain), web::Error);
    EXPECT_THROW(Render("BaseTabbed", plain), web::Error);
    EXPECT_THROW(Render("NoSuchView", plain), web::Error);
    EXPECT_EQ((std::vector<std::string>{"Base", "BaseForm", "BaseFormTabbed", "BaseTabbed", "General", "Reboot", "About",
                                        "WaitReboot", "Ethernet1", "DNSServer", "Firmware", "FirmwareUpgradeProgress",
                                        "PortForwarding"}),
              views::Registry::Instance().Names());
}

TEST(MediaRoot, EmptyStaysEmptyAndTheEnvironmentWins)
{
    Json::Value config = test::PageConfig("media");
    config["panelkit"]["media_root"] = "";
    web::Service service{web::Settings(config)};
    apps::Base app(service, "demo");
    web::Request request;
    request.setHead("GET", "/config/", "", "127.0.0.1");
    web::Response response;
    web::Context context(request, response);
    data::Base empty;
    app.Prepare(empty);
    EXPECT_EQ("", empty.media_root);
    EXPECT_EQ("/demo", empty.app_media_root);
    ::setenv("MEDIA_ROOT", "/static", 1);
    ::setenv("PLUGIN_MEDIA_ROOT", "plugins", 1);
    data::Base fromEnvironment;
    app.Prepare(fromEnvironment);
    ::unsetenv("MEDIA_ROOT");
    ::unsetenv("PLUGIN_MEDIA_ROOT");
    EXPECT_EQ("/static", fromEnvironment.media_root);
    EXPECT_EQ("/plugins/demo", fromEnvironment.app_media_root);
}

// Declared pages served by the one runner: forms told apart by their submit, checks, own saves, buttons,
// stored flag values and numbers, tables of keys, and what the view escapes.
#include "PageFixture.h"
#include "TempDir.h"
#include "apps/Base.h"
#include "page/Content.h"
#include "page/Form.h"
#include "page/Page.h"
#include "page/Table.h"
#include "util/DevicePath.h"
#include "util/Pardb.h"
#include "web/Context.h"
#include "web/Request.h"
#include "web/RequestParser.h"
#include "web/Response.h"
#include "web/Service.h"
#include "web/Settings.h"

#include <Poco/URI.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

using namespace panelkit;
using page::Field;
using ::testing::HasSubstr;
using ::testing::Not;

namespace {

const char kToken[] = "0123456789abcdef0123456789abcdef";


// A device root with an empty store, and a controller serving one declared page at a time.
class Declared : public ::testing::Test {
protected:
    Declared()
    {
        root_.write("tmp/.keep", "");
        root_.write("var/lib/pardb/.keep", "");
        util::SetDeviceRoot(root_.path());
        util::Pardb::FlushReadCache();
    }

    std::string Serve(const page::Page& page, const std::string& method, const std::vector<std::pair<std::string, std::string>>& fields = {})
    {
        web::Request request;
        request.setHead(method, "/config/test", "", "127.0.0.1");
        request.mutableHeaders().set("Cookie", std::string("panelkit_csrf=") + kToken);
        request.mutableHeaders().set("Content-Type", "application/x-www-form-urlencoded");
        std::string body = std::string("_csrf=") + kToken;
        for (const auto& [name, value] : fields) {
            std::string encoded;
            Poco::URI::encode(value, "&=+;<>", encoded);
            body += "&" + name + "=" + encoded;
        }
        std::istringstream stream(method == "POST" ? body : "");
        std::string message;
        web::RequestParser::Parse(request, stream, method == "POST" ? static_cast<std::int64_t>(body.size()) : 0,
                                  service_.limits(), message);
        web::Response response;
        web::Context context(request, response);
        app_.Serve(page);
        return response.body();
    }

    test::TempDir root_;
    web::Service service_{web::Settings(test::PageConfig())};
    apps::Base app_{service_, ""};
};

page::Page TwoForms()
{
    page::Page page("test", "Two Forms");
    page.Form("first_form", "First", "submit", "Save First")
        .Add(Field::Text("one", "cfg_test_one", "One").Key("test/one"))
        .Add(Field::Submit("submit", "cfg_test_first", "Save First"));
    page.Form("second_form", "Second", "submit", "Save Second")
        .Add(Field::Text("two", "cfg_test_two", "Two").Key("test/two"))
        .Add(Field::Submit("submit", "cfg_test_second", "Save Second"));
    return page;
}

}  // namespace

TEST_F(Declared, OnlyTheFormWhoseSubmitWasSentIsStoredAndTheOtherShowsTheStore)
{
    ASSERT_TRUE(util::Pardb::Set("test/two", std::string("stored two")));
    const page::Page page = TwoForms();
    const std::string html = Serve(page, "POST", {{"one", "posted one"}, {"two", "posted two"}, {"submit", "Save First"}});
    EXPECT_THAT(html, HasSubstr("Success: The form values were saved."));
    EXPECT_EQ("posted one", util::Pardb::GetString("test/one"));
    EXPECT_EQ("stored two", util::Pardb::GetString("test/two"));
    EXPECT_THAT(html, HasSubstr("name=\"two\" value=\"stored two\""));
    EXPECT_THAT(html, HasSubstr("<li><a href=\"#first_form_tab\">First</a></li><li><a href=\"#second_form_tab\">Second</a></li>"));
}

TEST_F(Declared, AnUnknownSubmitStoresNothing)
{
    const std::string html = Serve(TwoForms(), "POST", {{"one", "posted"}, {"submit", "Something Else"}});
    EXPECT_THAT(html, Not(HasSubstr("form_result_msg")));
    EXPECT_FALSE(util::Pardb::Exists("test/one"));
}

TEST_F(Declared, AFailedExtraCheckRefusesThePostAndWritesNothing)
{
    page::Page page("test", "Checked");
    page.Add(Field::Password("password", "cfg_test_pw", "New Password").Key("test/pw"))
        .Add(Field::Password("confirm", "cfg_test_pw2", "Confirm Password"))
        .Also([](page::Call& call) {
            if (call.form.Value("password") == call.form.Value("confirm"))
                return true;
            call.form["confirm"].valid(false);
            call.form["confirm"].error_message("Passwords do not match");
            return false;
        });
    const std::string html = Serve(page, "POST", {{"password", "secret1"}, {"confirm", "secret2"}});
    EXPECT_THAT(html, HasSubstr("Invalid values: The form values were not saved."));
    EXPECT_THAT(html, HasSubstr("<span class=\"cppcms_error_msg\">Passwords do not match</span>"));
    EXPECT_FALSE(util::Pardb::Exists("test/pw"));
    Serve(page, "POST", {{"password", "secret1"}, {"confirm", "secret1"}});
    EXPECT_EQ("secret1", util::Pardb::GetString("test/pw"));
}

TEST_F(Declared, AnOwnSaveMaySayWhatHappened)
{
    page::Page page("test", "Own Save");
    page.Add(Field::Text("name", "cfg_test_name", "Name")).SaveWith([](page::Call& call) {
        call.content.message = data::Message::Error("Error: The name could not be changed");
        return false;
    });
    EXPECT_THAT(Serve(page, "POST", {{"name", "x"}}), HasSubstr(">Error: The name could not be changed</div>"));
}

TEST_F(Declared, AButtonThatAnswersItselfRendersNoPage)
{
    page::Page page("test", "Download");
    page.Add(Field::Submit("download", "cfg_test_download", "Download"))
        .On("download", "Download", [](page::Call& call) {
            call.app.response().out() << "the file";
            return true;
        });
    EXPECT_EQ("the file", Serve(page, "POST", {{"download", "Download"}}));
    EXPECT_THAT(Serve(page, "GET"), HasSubstr("<h2 id=\"config_page_title\">Download</h2>"));
}

TEST_F(Declared, FlagsKeepTheirOwnStoredValuesAndNumbersAreStoredAsInts)
{
    page::Page page("test", "Values");
    page.Add(Field::Check("debug", "cfg_test_debug", "Debug").Flag("test/debug", "1", "0"))
        .Add(Field::Int("level", "cfg_test_level", "Level").IntKey("test/level"));
    Serve(page, "POST", {{"debug", "y"}, {"level", "5"}});
    EXPECT_EQ("1", util::Pardb::GetString("test/debug"));
    std::string value;
    PARDB_PAR_T type{};
    ASSERT_TRUE(util::Pardb::Get("test/level", value, type));
    EXPECT_EQ("5", value);
    EXPECT_EQ(0, static_cast<int>(type)) << "stored as an integer";
    Serve(page, "POST", {{"level", "7"}});
    EXPECT_EQ("0", util::Pardb::GetString("test/debug"));
    EXPECT_THAT(Serve(page, "GET"), HasSubstr("name=\"level\" value=\"7\""));
}

TEST_F(Declared, PageDataCannotCloseItsScriptElement)
{
    page::Page page("test", "Hostile");
    page.Status("test_status", {page::Output::Computed("x", "</script><script>alert(1)</script>", [] { return ""; })});
    const std::string html = Serve(page, "GET");
    EXPECT_THAT(html, Not(HasSubstr("</script><script>alert(1)")));
    EXPECT_THAT(html, HasSubstr("\\u003c/script\\u003e\\u003cscript\\u003ealert(1)"));
}

TEST_F(Declared, TheMediaRootIsEscapedInEveryAttribute)
{
    web::Service service{web::Settings(test::PageConfig("/m\"><b>x"))};
    apps::Base app(service, "");
    web::Request request;
    request.setHead("GET", "/config/test", "", "127.0.0.1");
    web::Response response;
    web::Context context(request, response);
    page::Page page("test", "Media");
    page.Status("test_status", {});
    app.Serve(page);
    EXPECT_THAT(response.body(), Not(HasSubstr("\"><b>x")));
    EXPECT_THAT(response.body(), HasSubstr("href=\"/m&quot;&gt;&lt;b&gt;x/images/Brenvik.ico\""));
    EXPECT_THAT(response.body(), HasSubstr("src=\"/m&quot;&gt;&lt;b&gt;x/images/spinner.gif\""));
}

TEST_F(Declared, ATableOfKeysListsWritesAndRemovesRows)
{
    const page::Table rules("test/portfwd/tcp", {"d_ip", "d_port"});
    ASSERT_TRUE(rules.Write("08080", {{"d_ip", "192.168.1.20"}, {"d_port", "80"}}));
    ASSERT_TRUE(rules.Write("00443", {{"d_ip", "192.168.1.21"}, {"d_port", "443"}}));
    ASSERT_TRUE(util::Pardb::Set("test/portfwd/tcp/00022/d_ip", std::string("192.168.1.22")));
    const auto rows = rules.Load();
    ASSERT_EQ(3u, rows.size());
    EXPECT_EQ("00022", rows.begin()->first);
    EXPECT_EQ("", rows.at("00022").at("d_port")) << "a row missing a column still shows";
    EXPECT_EQ("192.168.1.20", rows.at("08080").at("d_ip"));
    EXPECT_EQ("443", util::Pardb::GetString("test/portfwd/tcp/00443/d_port"));
    ASSERT_TRUE(rules.Remove("08080"));
    EXPECT_EQ(2u, rules.Load().size());
}

namespace {

// One tab of a form with two parts, each saving its own field, then a tab of its own linked by another name.
page::Page FormWithParts()
{
    page::Page page("test", "Parts");
    page.Form("pair_form", "Pair", "submit", "Save First")
        .Add(Field::Text("one", "cfg_test_one", "One").Required().Key("test/one"))
        .Add(Field::Submit("submit", "cfg_test_first", "Save First"))
        .Part("submit", "Save Second")
        .Add(Field::Text("two", "cfg_test_two", "Two").Required().Key("test/two"))
        .Add(Field::Submit("submit", "cfg_test_second", "Save Second"))
        .On("submit", "Ask", [](page::Call& call) {
            call.content.message = data::Message::Error("asked " + std::to_string(call.form.Fields().size()));
            return false;
        });
    page.Form("log_form", "Log").TabId("log_tab").Add(Field::Text("three", "cfg_test_three", "Three")).StatusInTab("Recent");
    page.Status("test_status", {page::Output::Computed("x", "", [] { return "x"; })}, "test_dynamic")
        .StatusFailure("Error retrieving x: ");
    return page;
}

}  // namespace

TEST_F(Declared, APartSharesItsFormsTabAndIsCheckedAndStoredOnItsOwn)
{
    const page::Page page = FormWithParts();
    EXPECT_EQ(page::Page::Layout::MultiForm, page.GetLayout());
    EXPECT_EQ(0u, page.TabOf(1));
    EXPECT_EQ(1u, page.TabOf(2));
    const std::string html = Serve(page, "POST", {{"one", ""}, {"two", "second"}, {"submit", "Save Second"}});
    EXPECT_THAT(html, HasSubstr("Success: The form values were saved."));
    EXPECT_EQ("second", util::Pardb::GetString("test/two"));
    EXPECT_FALSE(util::Pardb::Exists("test/one")) << "the other part is neither checked nor stored";
    EXPECT_THAT(html, HasSubstr("<li><a href=\"#pair_form_tab\">Pair</a></li><li><a href=\"#log_tab\">Log</a></li></ul>"));
    EXPECT_THAT(html, HasSubstr("name=\"two\" value=\"second\""));
    // Both parts' rows in one form element with one token.
    const auto form = html.find("<div id=\"pair_form\"><form");
    const auto end = html.find("</form>", form);
    ASSERT_NE(std::string::npos, form);
    const std::string inside = html.substr(form, end - form);
    EXPECT_THAT(inside, HasSubstr("id=\"cfg_test_first\""));
    EXPECT_THAT(inside, HasSubstr("id=\"cfg_test_second\""));
    EXPECT_EQ(inside.find("name=\"_csrf\""), inside.rfind("name=\"_csrf\""));
}

TEST_F(Declared, AStatusInATabShowsUnderItsHeadingAndItsFailureText)
{
    const std::string html = Serve(FormWithParts(), "GET");
    EXPECT_THAT(html, HasSubstr("<div id=\"log_tab\" class=\"tabdiv\"><div id=\"log_form\"><form"));
    EXPECT_THAT(html, HasSubstr("</form></div><h3>Recent</h3><div class=\"command_output\" id=\"test_dynamic\"><img"));
    EXPECT_THAT(html, HasSubstr("\"failure\":\"Error retrieving x: \""));
    EXPECT_THAT(html, HasSubstr("\"tabs\":{\"selected\":0}"));
}

TEST_F(Declared, APostOrAButtonOpensTheTabOfItsForm)
{
    const page::Page page = FormWithParts();
    EXPECT_THAT(Serve(page, "POST", {{"three", "3"}, {"submit", "Ask"}}), HasSubstr(">asked 2</div>"));
    page::Page second = FormWithParts();
    second.Form("third_form", "Third", "submit", "Save Third").Add(Field::Text("four", "cfg_test_four", "Four"));
    EXPECT_THAT(Serve(second, "POST", {{"four", ""}, {"submit", "Save Third"}}), HasSubstr("\"tabs\":{\"selected\":2}"));
    EXPECT_THAT(Serve(second, "POST", {{"two", ""}, {"submit", "Save Second"}}), HasSubstr("\"tabs\":{\"selected\":0}"));
}

TEST_F(Declared, WhatEveryRequestShowsGivesWayToWhatAPostDid)
{
    page::Page page("test", "Standing");
    page.Add(Field::Text("name", "cfg_test_name", "Name").Key("test/name")).Prepare([](page::Call& call) {
        call.content.message = data::Message::Error("Standing notice", true);
    });
    EXPECT_THAT(Serve(page, "GET"), HasSubstr("<div class=\"failure static form_result_msg\">Standing notice</div>"));
    const std::string saved = Serve(page, "POST", {{"name", "x"}});
    EXPECT_THAT(saved, HasSubstr("Success: The form values were saved."));
    EXPECT_THAT(saved, Not(HasSubstr("Standing notice")));
}

TEST(StatusReply, DeclaredBlocksAnswerTheirTextsAndAnOwnReadingKeepsItsTypes)
{
    page::Page blocks("test", "Test");
    blocks.Status("test_status", {page::Output::Computed("a", "A", [] { return "1"; }),
                                  page::Output::Computed("b", "B", [] { return "two"; })});
    Json::Value texts(Json::objectValue);
    texts["a"] = "1";
    texts["b"] = "two";
    EXPECT_EQ(texts, blocks.StatusReply());

    page::Page own("test", "Test");
    own.Status("test_status", {}).StatusFrom([] {
        Json::Value reply(Json::objectValue);
        reply["up"] = false;
        reply["count"] = 3;
        return reply;
    });
    const Json::Value reply = own.StatusReply();
    ASSERT_TRUE(reply["up"].isBool());
    EXPECT_FALSE(reply["up"].asBool());
    EXPECT_TRUE(reply["count"].isInt());
    EXPECT_EQ(2u, reply.size());
}

// Widgets loading posted values, the page form check that marks failures, and the address widget.
#include "TempDir.h"
#include "forms/Base.h"
#include "util/Validation.h"
#include "web/Request.h"
#include "web/RequestParser.h"
#include "web/widgets/Checkbox.h"
#include "web/widgets/File.h"
#include "web/widgets/Numeric.h"
#include "web/widgets/Password.h"
#include "web/widgets/Radio.h"
#include "web/widgets/Select.h"
#include "web/widgets/SelectMultiple.h"
#include "web/widgets/Submit.h"
#include "web/widgets/Text.h"
#include "widgets/IpAddress.h"

#include <gtest/gtest.h>

#include <sstream>

using namespace panelkit;
using namespace panelkit::web::widgets;
namespace validation = panelkit::util::validation;

namespace {

// A POST of url-encoded fields, parsed as the front ends parse it.
void Post(web::Request& request, const std::string& body)
{
    request.setHead("POST", "/config/x", "", "127.0.0.1");
    request.mutableHeaders().add("Content-Type", "application/x-www-form-urlencoded");
    std::istringstream in(body);
    std::string problem;
    ASSERT_EQ(0, web::RequestParser::Parse(request, in, static_cast<std::int64_t>(body.size()), web::Limits{}, problem))
        << problem;
}

std::string Rendered(const BaseWidget& widget)
{
    std::ostringstream out;
    widget.render_input(out);
    return out.str();
}

}  // namespace

TEST(IpAddress, StrictDottedQuads)
{
    widgets::IpAddress ip;
    for (const std::string good : {"192.168.1.1", "0.0.0.0", "255.255.255.255", "10.01.1.1"}) {
        ip.value(good);
        EXPECT_TRUE(ip.validate()) << good;
    }
    for (const std::string bad : {"256.1.1.1", "1.2.3", "1.2.3.4.5", "", "10.001.1.1", " 1.2.3.4", "1.2.3.4\n"}) {
        ip.value(bad);
        EXPECT_FALSE(ip.validate()) << bad;
    }
}

TEST(IpAddress, EmptyPassesOnlyWhenAllowed)
{
    widgets::IpAddress ip;
    ip.value("");
    EXPECT_FALSE(ip.validate());
    ip.SetAllowEmpty(true);
    EXPECT_TRUE(ip.validate());
    ip.value("300.1.1.1");
    EXPECT_FALSE(ip.validate());
    EXPECT_EQ("(" + widgets::IpAddress::RegexString(false) + "|^$)", widgets::IpAddress::RegexString(true));
}

TEST(FormsBase, TwoFailingWidgetsAreBothMarked)
{
    struct TwoFields : forms::Base {
        Text name;
        widgets::IpAddress address;
        Text fine;
        TwoFields()
        {
            add(name);
            add(address);
            add(fine);
        }
    } form;
    validation::Length(form.name, 1, 32);
    form.name.value("");
    form.address.value("1.2.3");
    form.fine.value("ok");
    EXPECT_FALSE(form.validate());
    EXPECT_EQ("class='cppcms_error_msg'", form.name.attributes_string());
    EXPECT_EQ("class='cppcms_error_msg'", form.address.attributes_string());
    EXPECT_EQ("", form.fine.attributes_string());
}

TEST(AddClass, AppendsToAnExistingClassList)
{
    Text widget;
    widget.attributes_string("class='wide'");
    validation::AddClass(widget, "cppcms_error_msg");
    EXPECT_EQ("class='wide cppcms_error_msg'", widget.attributes_string());
    validation::AddClass(widget, "cppcms_error_msg");
    EXPECT_EQ("class='wide cppcms_error_msg cppcms_error_msg'", widget.attributes_string());
}

TEST(AddClass, EmptyClassChangesNothingAndOtherAttributesAreReplaced)
{
    Text widget;
    widget.attributes_string("size='4'");
    validation::AddClass(widget, "");
    EXPECT_EQ("size='4'", widget.attributes_string());
    validation::AddClass(widget, "x");
    EXPECT_EQ("class='x'", widget.attributes_string());
}

TEST(Validation, MessagesCarryTheLimits)
{
    Text text;
    validation::Length(text, 1, 32);
    EXPECT_EQ("Invalid length; minimum 1, maximum 32", text.error_message());
    validation::MinLength(text, 8);
    EXPECT_EQ("Invalid length; minimum 8", text.error_message());
    File file;
    validation::Length(file, 1, 4096);
    EXPECT_EQ("Invalid file length; minimum 1, maximum 4096 bytes.", file.error_message());
    EXPECT_TRUE(file.required());
    Select select;
    validation::NonEmpty(select);
    EXPECT_EQ("This field is required", select.error_message());
}

TEST(Text, LengthCountsCharactersNotBytes)
{
    Text name;
    validation::Length(name, 1, 4);
    name.value("Ünïç");
    EXPECT_TRUE(name.validate());
    name.value("Ünïçø");
    EXPECT_FALSE(name.validate());
    name.value("");
    EXPECT_FALSE(name.validate());
}

TEST(Text, ValueIsEscapedWhenRendered)
{
    Text name;
    name.name("device");
    name.id("cfg_grl_device_name");
    name.value("\"><script>");
    EXPECT_EQ("<input type=\"text\" id=\"cfg_grl_device_name\" name=\"device\" value=\"&quot;&gt;&lt;script&gt;\" />",
              Rendered(name));
}

TEST(Password, NeverRendersWhatWasTyped)
{
    Password password;
    password.name("pw");
    password.value("secret");
    EXPECT_EQ(std::string::npos, Rendered(password).find("secret"));
}

TEST(Checkbox, AbsentFromAPostIsUnticked)
{
    Checkbox box;
    box.name("append");
    box.value(true);
    web::Request request;
    Post(request, "other=1");
    box.load(request);
    EXPECT_FALSE(box.value());
    web::Request ticked;
    Post(ticked, "append=y");
    box.load(ticked);
    EXPECT_TRUE(box.value());
    EXPECT_NE(std::string::npos, Rendered(box).find("checked=\"checked\""));
}

TEST(Select, PostedIdMustBeAnOption)
{
    Select mode;
    mode.name("addressMode");
    mode.add("Static", "static");
    mode.add("DHCP", "dhcp");
    web::Request good;
    Post(good, "addressMode=dhcp");
    mode.load(good);
    EXPECT_TRUE(mode.validate());
    EXPECT_EQ("dhcp", mode.selected_id());
    EXPECT_EQ(1, mode.selected());
    web::Request bad;
    Post(bad, "addressMode=bridge");
    mode.load(bad);
    EXPECT_FALSE(mode.validate());
    EXPECT_EQ("", mode.selected_id());
}

TEST(Select, RequiredSelectWithoutPostFails)
{
    Select lang;
    lang.name("lang");
    lang.add("English", "");
    validation::NonEmpty(lang);
    web::Request none;
    Post(none, "x=1");
    lang.load(none);
    EXPECT_FALSE(lang.validate());
    web::Request english;
    Post(english, "lang=");
    lang.load(english);
    EXPECT_TRUE(lang.validate());
}

TEST(SelectMultiple, SelectionsAreCountedAndUnknownIdsRefused)
{
    SelectMultiple speeds;
    speeds.name("speeds");
    for (const char* id : {"0", "1", "2", "3"})
        speeds.add(std::string("speed ") + id, id);
    speeds.at_least(1);
    web::Request none;
    Post(none, "x=1");
    speeds.load(none);
    EXPECT_FALSE(speeds.validate());
    web::Request two;
    Post(two, "speeds=1&speeds=3");
    speeds.load(two);
    EXPECT_TRUE(speeds.validate());
    EXPECT_EQ((std::vector<std::string>{"1", "3"}), speeds.selected_ids());
    web::Request unknown;
    Post(unknown, "speeds=1&speeds=9");
    speeds.load(unknown);
    EXPECT_FALSE(speeds.validate());
}

TEST(Numeric, TextThatIsNotANumberFails)
{
    Numeric<unsigned int> port;
    port.name("port");
    port.range(1, 65535);
    for (const std::string bad : {"80x", "-1", "1,000", " 80", "70000", "0"}) {
        web::Request request;
        Post(request, "port=" + bad);
        port.load(request);
        EXPECT_FALSE(port.validate()) << bad;
    }
    web::Request good;
    Post(good, "port=8080");
    port.load(good);
    EXPECT_TRUE(port.validate());
    EXPECT_EQ(8080u, port.value());
    Numeric<int> offset;
    offset.value(-5);
    offset.range(-10, 10);
    EXPECT_TRUE(offset.validate());
}

TEST(Submit, PressedTellsWhichButtonSent)
{
    Submit save, remove;
    save.name("save");
    remove.name("delete");
    web::Request request;
    Post(request, "save=Save");
    save.load(request);
    remove.load(request);
    EXPECT_TRUE(save.pressed());
    EXPECT_FALSE(remove.pressed());
}

TEST(File, ChecksSizeTypeNameAndMagic)
{
    test::TempDir dir;
    dir.write("up", std::string("\xD0\x0D\xFE\xED", 4) + "image");
    web::Request request;
    const std::string body = "--b\r\nContent-Disposition: form-data; name=\"image\"; filename=\"fw.bin\"\r\n"
                             "Content-Type: application/octet-stream\r\n\r\n" +
                             std::string("\xD0\x0D\xFE\xED", 4) + "image\r\n--b--\r\n";
    request.setHead("POST", "/config/settings/firmware", "", "127.0.0.1");
    request.mutableHeaders().add("Content-Type", "multipart/form-data; boundary=b");
    std::istringstream in(body);
    std::string problem;
    web::Limits limits;
    limits.uploadDirectory = dir.path();
    ASSERT_EQ(0, web::RequestParser::Parse(request, in, static_cast<std::int64_t>(body.size()), limits, problem));

    File image;
    image.name("image");
    image.load(request);
    ASSERT_NE(nullptr, image.value());
    EXPECT_EQ("fw.bin", image.value()->filename);
    EXPECT_TRUE(image.validate());
    image.add_valid_magic(std::string("\xD0\x0D\xFE\xED", 4));
    image.filename(web::Pattern(".*\\.bin"));
    image.mime("application/octet-stream");
    EXPECT_TRUE(image.validate());
    image.limits(0, 4);
    EXPECT_FALSE(image.validate());
    image.limits(0, -1);
    image.filename(web::Pattern(".*\\.img"));
    EXPECT_FALSE(image.validate());
    image.filename(web::Pattern(".*"));
    image.add_valid_magic("XX");
    EXPECT_TRUE(image.validate()) << "one matching beginning is enough";
}

TEST(Radio, AButtonPerOptionUnderOneNameLoadedAsASelect)
{
    Radio which;
    which.name("eraseWhich");
    which.id("cfg_which");
    which.add("Log <Partition>", "erase_log");
    which.add("Data Partition", "erase_data");
    validation::NonEmpty(which);
    web::Request posted;
    Post(posted, "eraseWhich=erase_data");
    which.load(posted);
    EXPECT_TRUE(which.validate());
    EXPECT_EQ("erase_data", which.selected_id());
    EXPECT_EQ("<div class=\"radio_select\" id=\"cfg_which\">"
              "<label><input type=\"radio\" id=\"cfg_which_0\" name=\"eraseWhich\" value=\"erase_log\" /> "
              "Log &lt;Partition&gt;</label><br />"
              "<label><input type=\"radio\" id=\"cfg_which_1\" name=\"eraseWhich\" value=\"erase_data\" checked=\"checked\" /> "
              "Data Partition</label><br /></div>",
              Rendered(which));
    web::Request none;
    Post(none, "x=1");
    which.load(none);
    EXPECT_FALSE(which.validate());
    web::Request unknown;
    Post(unknown, "eraseWhich=erase_root");
    which.load(unknown);
    EXPECT_FALSE(which.validate());
}

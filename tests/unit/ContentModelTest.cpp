// Page content records: messages and menu entries as the layout uses them.
#include "data/Base.h"
#include "data/Menu.h"
#include "data/Message.h"
#include "web/Application.h"
#include "web/Service.h"

#include <gtest/gtest.h>

using namespace panelkit;
using data::Menu;
using data::Message;

TEST(Message, FactoriesCarryTheSystemsTexts)
{
    EXPECT_EQ("Success: The form values were saved.", Message::SaveOK().GetText());
    EXPECT_EQ(Message::ResultClass::OK, Message::SaveOK().GetResultClass());
    EXPECT_EQ("Save error: The form values were not saved.", Message::SaveError().GetText());
    EXPECT_EQ(Message::ResultClass::Error, Message::SaveError().GetResultClass());
    EXPECT_EQ("Invalid values: The form values were not saved.", Message::ValidationError().GetText());
    EXPECT_FALSE(Message::ValidationError().IsPersistent());
    EXPECT_TRUE(Message::OK("kept", true).IsPersistent());
}

TEST(Message, ClearKeepsTheClass)
{
    Message message = Message::OK("done");
    message.Clear();
    EXPECT_TRUE(message.IsEmpty());
    EXPECT_EQ(Message::ResultClass::OK, message.GetResultClass());
}

TEST(Message, SetCssClassMakesACustomMessage)
{
    Message message = Message::Error("bad");
    message.SetCssClass("notice");
    EXPECT_EQ(Message::ResultClass::Custom, message.GetResultClass());
    EXPECT_EQ("notice", message.GetCssClass());
    const Message custom = Message::Custom("hello", "banner-note", true);
    EXPECT_EQ("banner-note", custom.GetCssClass());
    EXPECT_TRUE(custom.IsPersistent());
}

TEST(Menu, IdReplacesBlanksWithUnderscores)
{
    EXPECT_EQ("Port_Forwarding", Menu("Port Forwarding").Id());
    EXPECT_EQ("NTP_Server", Menu("NTP Server").Id());
    EXPECT_EQ("Wi-Fi/AP", Menu("Wi-Fi/AP").Id());
}

TEST(Menu, UrlGoesThroughTheMapperAndIsEmptyForAGroup)
{
    web::Service service{web::Settings{}};
    web::Application root(service);
    root.mapper().root("/config");
    auto& settings = root.attach(std::make_unique<web::Application>(service), "settings", "/settings{1}", "/settings(.*)", 1);
    settings.mapper().assign("reboot", "/reboot");
    settings.mapper().assign("about2", "/about/{1}/{2}");
    settings.mapper().assign("item", "/item/{1}");
    EXPECT_EQ("/config/settings/reboot", Menu("Reboot", "/settings/reboot").Url(root));
    EXPECT_EQ("/config/settings/item/7", Menu("Item", "/settings/item", "7").Url(root));
    EXPECT_EQ("", Menu("Settings", "", "7").Url(root));
}

TEST(Menu, ChildrenChainAndAnEntryCannotHoldItself)
{
    Menu network("Network");
    network << Menu("Ethernet 1", "/network/ethernet1") << Menu("OpenVPN", "/network/openvpn");
    ASSERT_EQ(2u, network.GetChildren().size());
    EXPECT_EQ("OpenVPN", network.GetChildren()[1].GetText());
    testing::internal::CaptureStderr();
    network << network;
    const std::string log = testing::internal::GetCapturedStderr();
    EXPECT_EQ(2u, network.GetChildren().size());
    EXPECT_NE(std::string::npos, log.find("Cannot add menu to itself!")) << log;
}

TEST(BaseContent, FreshContentHasNoMessageAlertOrExtraFiles)
{
    const data::BaseTabbed content;
    EXPECT_EQ(Message::ResultClass::None, content.message.GetResultClass());
    EXPECT_FALSE(content.reboot_required);
    EXPECT_EQ(0, content.fw_base_alert);
    EXPECT_TRUE(content.stylesheets.empty());
    EXPECT_TRUE(content.scripts.empty());
    EXPECT_EQ(0, content.selected_tab);
}

// A store that refuses a key, as a failing device store would: the page says so and nothing changes.
#include "Http.h"
#include "Server.h"

#include <gtest/gtest.h>

using namespace panelkit::test;

TEST(StoreRefusal, TheGeneralPageShowsTheSaveErrorAndTheNameStays)
{
    Server server;
    ASSERT_TRUE(server.simulateDevice());
    ASSERT_TRUE(server.start()) << server.log();
    ASSERT_TRUE(server.storeRefuse("net/hostname"));

    const char page[] = "/config/settings/general";
    const FormToken form = OpenForm(server.port(), page);
    const HttpReply reply = Http(server.port(), "POST", page,
                                 "_csrf=" + form.token + "&deviceName=excavator-7&language=&saveButton=Save",
                                 "application/x-www-form-urlencoded", form.headers());
    EXPECT_NE(std::string::npos, reply.body.find("Save error: The form values were not saved.")) << reply.body;
    EXPECT_EQ("fieldrouter", server.storeGet("net/hostname"));
    EXPECT_NE(std::string::npos, server.log().find("FAIL pardblib::setPar \"net/hostname\"")) << server.log();
}

TEST(StoreRefusal, OnlyTheRefusedKeyFails)
{
    Server server;
    ASSERT_TRUE(server.simulateDevice());
    const std::string before = server.storeGet("net/lan_dns1");
    ASSERT_TRUE(server.storeRefuse("net/lan_dns1"));
    EXPECT_FALSE(server.storeSet("net/lan_dns1", "1.1.1.1"));
    EXPECT_EQ(before, server.storeGet("net/lan_dns1"));
    EXPECT_TRUE(server.storeSet("net/lan_dns2", "1.0.0.1"));
    EXPECT_EQ("1.0.0.1", server.storeGet("net/lan_dns2"));
}

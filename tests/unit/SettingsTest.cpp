// Settings: dotted look-ups, defaults and command-line overrides.
#include "TempDir.h"
#include "web/Settings.h"

#include <gtest/gtest.h>

using panelkit::test::TempDir;
using panelkit::web::Settings;
using panelkit::web::SettingsError;

namespace {

Settings FromArgs(std::vector<std::string> args)
{
    std::vector<const char*> argv{"panelkit"};
    for (const auto& arg : args)
        argv.push_back(arg.c_str());
    return Settings::FromCommandLine(static_cast<int>(argv.size()), argv.data());
}

}  // namespace

TEST(Settings, AtThrowsForAMissingKey)
{
    const Settings settings = FromArgs({"--service.port=8123"});
    EXPECT_THROW(settings.at("panelkit.root.rpc"), SettingsError);
    EXPECT_EQ(8123, settings.at("service.port").asInt());
}

TEST(Settings, GetFallsBackWhenMissingOrOfAnotherType)
{
    const Settings settings = FromArgs({"--service.api=fastcgi", "--service.port=8123"});
    EXPECT_EQ("fastcgi", settings.get("service.api", "http"));
    EXPECT_EQ("none", settings.get("service.socket", "none"));
    EXPECT_EQ("none", settings.get("service.port", "none"));
    EXPECT_EQ(4, settings.get("service.worker_threads", 4));
}

TEST(Settings, OverridesKeepTheirJsonType)
{
    const Settings settings = FromArgs({"--file_server.enable=true", "--a.b=12", "--a.c=text", "--a.d=1.5"});
    EXPECT_TRUE(settings.at("file_server.enable").isBool());
    EXPECT_TRUE(settings.at("a.b").isInt());
    EXPECT_EQ("text", settings.at("a.c").asString());
    EXPECT_DOUBLE_EQ(1.5, settings.at("a.d").asDouble());
}

TEST(Settings, CommandLineOverridesTheFileGivenBeforeIt)
{
    TempDir dir;
    dir.write("c.json", R"({"service": {"port": 8080, "api": "http"}, "panelkit": {"root": {"sync": "config"}}})");
    const Settings settings = FromArgs({"-c", dir / "c.json", "--service.port=9000"});
    EXPECT_EQ(9000, settings.at("service.port").asInt());
    EXPECT_EQ("http", settings.at("service.api").asString());
    EXPECT_EQ("config", settings.at("panelkit.root.sync").asString());
}

TEST(Settings, BrokenFileAndUnknownArgumentsAreErrors)
{
    TempDir dir;
    dir.write("bad.json", "{\"service\": ");
    EXPECT_THROW(FromArgs({"-c", dir / "bad.json"}), SettingsError);
    EXPECT_THROW(FromArgs({"-c", dir / "missing.json"}), SettingsError);
    EXPECT_THROW(FromArgs({"-c"}), SettingsError);
    EXPECT_THROW(FromArgs({"--noequals"}), SettingsError);
    EXPECT_THROW(FromArgs({"plain"}), SettingsError);
}

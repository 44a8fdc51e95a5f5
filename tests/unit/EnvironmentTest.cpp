// Environment look-ups, settings the environment overrides, and the device root.
#include "util/DevicePath.h"
#include "util/Environment.h"
#include "web/Settings.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <unistd.h>

namespace util = panelkit::util;

TEST(Environment, EnvironmentWinsWhenSetAndNotEmpty)
{
    Json::Value config;
    config["panelkit"]["media_root"] = "/media";
    config["panelkit"]["number"] = 5;
    const panelkit::web::Settings settings(config);
    ::unsetenv("PANELKIT_TEST_MEDIA");
    EXPECT_EQ("", util::GetEnv("PANELKIT_TEST_MEDIA"));
    EXPECT_EQ("/media", util::EnvOrSettings("PANELKIT_TEST_MEDIA", "panelkit.media_root", settings));
    ::setenv("PANELKIT_TEST_MEDIA", "", 1);
    EXPECT_EQ("/media", util::EnvOrSettings("PANELKIT_TEST_MEDIA", "panelkit.media_root", settings));
    ::setenv("PANELKIT_TEST_MEDIA", "/other", 1);
    EXPECT_EQ("/other", util::GetEnv("PANELKIT_TEST_MEDIA"));
    EXPECT_EQ("/other", util::EnvOrSettings("PANELKIT_TEST_MEDIA", "panelkit.media_root", settings));
    ::unsetenv("PANELKIT_TEST_MEDIA");
    EXPECT_EQ("", util::EnvOrSettings("PANELKIT_TEST_MEDIA", "panelkit.number", settings));
    EXPECT_EQ("", util::EnvOrSettings("PANELKIT_TEST_MEDIA", "panelkit.none", settings));
}

TEST(DevicePaths, RootIsPutBeforeDevicePathsAndMadeAbsolute)
{
    util::SetDeviceRoot("relative/root/");
    char cwd[4096];
    ASSERT_NE(nullptr, ::getcwd(cwd, sizeof cwd));
    EXPECT_EQ(std::string(cwd) + "/relative/root/tmp/x", util::DevicePath("/tmp/x"));
    EXPECT_EQ(std::string(cwd) + "/relative/root", util::GetEnv("PANELKIT_DEVICE_ROOT"));
    EXPECT_EQ(0u, util::GetEnv("PATH").rfind(std::string(cwd) + "/relative/root/usr/sbin:", 0));
    util::SetDeviceRoot("");
    EXPECT_EQ("/tmp/x", util::DevicePath("/tmp/x"));
    EXPECT_EQ(std::string::npos, util::GetEnv("PATH").find("relative/root"));
}

// The configuration files shipped with panelkit parse and carry the keys the process needs.
#include "web/Settings.h"

#include <gtest/gtest.h>

using panelkit::web::Settings;

namespace {

void ExpectStartable(const Settings& settings)
{
    for (const char* key : {"panelkit.root.sync", "panelkit.root.async", "panelkit.root.rpc", "service.api"})
        EXPECT_TRUE(settings.at(key).isString()) << key;
}

}  // namespace

TEST(ShippedConfig, SimulatorServesHttpOnLoopback8080WithTheSimulatedDevice)
{
    const Settings settings = Settings::FromFile(PANELKIT_SOURCE_DIR "/config/sim.json");
    ExpectStartable(settings);
    EXPECT_EQ("http", settings.get("service.api", ""));
    EXPECT_EQ("127.0.0.1", settings.get("service.ip", ""));
    EXPECT_EQ(8080, settings.get("service.port", 0));
    EXPECT_EQ("run/device", settings.get("panelkit.device_root", ""));
    EXPECT_EQ("config", settings.get("panelkit.root.sync", ""));
    EXPECT_TRUE(settings.get("file_server.enable", false));
    // The file server serves the media tree at "/", so the pages find it without a prefix.
    EXPECT_EQ("build/media", settings.get("file_server.document_root", ""));
    EXPECT_EQ("", settings.get("panelkit.media_root", "unset"));
}

TEST(ShippedConfig, DeviceServesFastCgiOnAUnixSocketWithTheDevicePaths)
{
    const Settings settings = Settings::FromFile(PANELKIT_SOURCE_DIR "/config/device.json");
    ExpectStartable(settings);
    EXPECT_EQ("fastcgi", settings.get("service.api", ""));
    EXPECT_FALSE(settings.get("service.socket", "").empty());
    EXPECT_EQ("", settings.get("panelkit.device_root", "unset"));
    EXPECT_TRUE(settings.get("logging.syslog", false));
}

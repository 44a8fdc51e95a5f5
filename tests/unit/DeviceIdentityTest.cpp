// The device's identity: assembly number, device ID, name and current address.
#include "TempDir.h"
#include "util/DeviceIdentity.h"
#include "util/DevicePath.h"

#include <gtest/gtest.h>

#include <qor_util/system.h>

using panelkit::test::TempDir;
namespace util = panelkit::util;

TEST(Identity, DeviceIdStatusesGiveTheirTexts)
{
    TempDir root;
    util::SetDeviceRoot(root.path());
    EXPECT_EQ("(error: ID not initialized)", util::SystemDeviceID());
    root.write("etc/qor/device_id", "not-an-id\n");
    EXPECT_EQ("(error: invalid ID)", util::SystemDeviceID());
    root.write("etc/qor/device_id", "0012-3456-789A\n");
    EXPECT_EQ("0012-3456-789A", util::SystemDeviceID());
}

TEST(Identity, AssemblyNumberAndTheCachedDeviceName)
{
    TempDir root;
    util::SetDeviceRoot(root.path());
    root.write("etc/qor/barcode_asn", "A123456789\n");
    EXPECT_EQ("A123456789", util::SystemAssemblySN());
    EXPECT_EQ("ulm3_A123456789", util::DeviceName());
    root.write("etc/qor/barcode_asn", "B000000001\n");
    EXPECT_EQ("B000000001", util::SystemAssemblySN());
    EXPECT_EQ("ulm3_A123456789", util::DeviceName()) << "the name is read once per process";
}

TEST(Identity, CurrentAddressPrefersTheBridge)
{
    EXPECT_EQ("192.168.1.1", util::CurrentIPAddressOf({{"eth0", "10.0.0.5"}, {"br1", "192.168.1.1"}, {"lo", "127.0.0.1"}}));
    EXPECT_EQ("10.0.0.5", util::CurrentIPAddressOf({{"eth1", "10.1.0.5"}, {"eth0", "10.0.0.5"}}));
    EXPECT_EQ("10.1.0.5", util::CurrentIPAddressOf({{"eth1", "10.1.0.5"}, {"wlan0", "10.2.0.5"}}));
    EXPECT_EQ("10.0.0.9", util::CurrentIPAddressOf({{"eth0", "10.0.0.5"}, {"eth0", "10.0.0.9"}}));
    EXPECT_EQ("", util::CurrentIPAddressOf({{"lo", "127.0.0.1"}}));
}

TEST(Identity, SettingTheAssemblyNumberReportsSuccessWithNonZero)
{
    TempDir root;
    util::SetDeviceRoot(root.path());
    EXPECT_EQ(0, qor_util::system::SetBarcodeASN("A1")) << "no identity folder on this device";
    root.write("etc/qor/.keep", "");
    EXPECT_NE(0, qor_util::system::SetBarcodeASN("A987654321"));
    EXPECT_EQ("A987654321", util::SystemAssemblySN());
    EXPECT_EQ(0, qor_util::system::SetBarcodeASN("")) << "an empty number is refused";
    EXPECT_EQ(0, qor_util::system::SetBarcodeASN("A1\nB2"));
    int status = -1;
    EXPECT_EQ("A987654321", qor_util::system::GetBarcodeASN(&status));
    EXPECT_EQ(0, status);
}

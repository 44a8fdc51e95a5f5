// The device's identity: assembly number, device ID, name and current address.
#include "Process.h"
#include "TempDir.h"
#include "util/DeviceIdentity.h"
#include "util/DevicePath.h"
#include "util/Pardb.h"

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

TEST(Identity, TheCurrentAddressOfASimulatedDeviceIsItsBridgesAddressNotTheHosts)
{
    TempDir work;
    ASSERT_TRUE(panelkit::test::SimulateDevice(work, work / "device"));
    util::SetDeviceRoot(work / "device");
    util::Pardb::FlushReadCache();
    EXPECT_EQ("192.168.1.1", util::GetCurrentIPAddress());
    // The simulated bridge carries the stored LAN address.
    ASSERT_TRUE(util::Pardb::Set("net/lan_ipaddr", std::string("10.20.30.40")));
    EXPECT_EQ("10.20.30.40", util::GetCurrentIPAddress());
    EXPECT_NE(std::string::npos, panelkit::test::ReadFile(work / "device/var/log/sim-commands.log").find("/sbin/ifconfig\n"));
}

TEST(Identity, TheCurrentAddressComesFromTheDevicesInterfaceListing)
{
    TempDir root;
    util::SetDeviceRoot(root.path());
    EXPECT_EQ("", util::GetCurrentIPAddress()) << "a device without interfaces has no address";
    const auto listing = [&root](const std::string& interfaces) {
        root.write("sbin/ifconfig", "#!/bin/sh\ncat <<'OUT'\n" + interfaces + "OUT\n", true);
    };
    const std::string eth0 = "eth0      Link encap:Ethernet  HWaddr 00:1E:C0:4A:11:02\n"
                             "          inet addr:10.0.0.5  Bcast:10.0.0.255  Mask:255.255.255.0\n"
                             "          inet6 addr: fe80::21e:c0ff:fe4a:1102/64 Scope:Link\n\n";
    const std::string br1 = "br1       Link encap:Ethernet  HWaddr 00:1E:C0:4A:11:02\n"
                            "          inet addr:192.168.7.1  Bcast:192.168.7.255  Mask:255.255.255.0\n\n";
    const std::string eth1 = "eth1: flags=4163<UP,BROADCAST,RUNNING,MULTICAST>  mtu 1500\n"
                             "        inet 10.1.0.5  netmask 255.255.255.0  broadcast 10.1.0.255\n\n";
    const std::string lo = "lo        Link encap:Local Loopback\n          inet addr:127.0.0.1  Mask:255.0.0.0\n\n";
    listing(eth0 + br1 + lo);
    EXPECT_EQ("192.168.7.1", util::GetCurrentIPAddress());
    listing(eth1 + eth0 + lo);
    EXPECT_EQ("10.0.0.5", util::GetCurrentIPAddress());
    listing(eth1 + lo);
    EXPECT_EQ("10.1.0.5", util::GetCurrentIPAddress());
    listing(lo + "br1       Link encap:Ethernet  HWaddr 00:1E:C0:4A:11:02\n\n");
    EXPECT_EQ("", util::GetCurrentIPAddress()) << "an interface without an address gives none";
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

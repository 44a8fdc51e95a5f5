// The General page: identity, device name rules, and the system status of the device.
#include "PageFixture.h"

#include <Poco/File.h>

using namespace panelkit;
using namespace panelkit::test;
using ::testing::HasSubstr;
using ::testing::Not;

namespace {

class GeneralPage : public PageFixture {
};

const char kGeneral[] = "/config/settings/general";
const char kInvalid[] = "Invalid values: The form values were not saved.";

}  // namespace

TEST_F(GeneralPage, GeneralIsServedAtTheControllerRootAndByName)
{
    for (const char* path : {"/config/settings", "/config/settings/", kGeneral}) {
        const auto reply = Get(path);
        EXPECT_EQ(200, reply.status) << path;
        EXPECT_TRUE(Has(reply.body, ">General Device Configuration</h2>")) << path;
        EXPECT_TRUE(Has(reply.body, "<td class=\"ui-serial-number\"><b>A123456789</b></td>")) << path;
        EXPECT_TRUE(Has(reply.body, "<td class=\"ui-serial-number\"><b>0012-3456-789A</b></td>")) << path;
        EXPECT_TRUE(Has(reply.body, "name=\"deviceName\" value=\"fieldrouter\"")) << path;
        EXPECT_TRUE(Has(reply.body, "<h3>Version Info</h3><div class=\"command_output\"><pre>ULM3 2.4.1")) << path;
        EXPECT_TRUE(Has(reply.body, "<h3>Uname</h3>")) << path;
    }
}

TEST_F(GeneralPage, GeneralAcceptsADeviceNameOf64Characters)
{
    const std::string name(64, 'n');
    const auto reply = Post(kGeneral, {{"deviceName", name}, {"language", ""}, {"saveButton", "Save"}});
    EXPECT_TRUE(Has(reply.body, "Success: The form values were saved.")) << reply.body;
    EXPECT_EQ(name, StoreGet("net/hostname"));
    EXPECT_EQ("", StoreGet("language"));
    EXPECT_FALSE(RebootMarked());
}

TEST_F(GeneralPage, GeneralRefusesADeviceNameOf65Characters)
{
    const auto reply = Post(kGeneral, {{"deviceName", std::string(65, 'n')}, {"language", ""}});
    EXPECT_TRUE(Has(reply.body, kInvalid)) << reply.body;
    EXPECT_EQ("fieldrouter", StoreGet("net/hostname"));
}

TEST_F(GeneralPage, GeneralRefusesAnEmptyDeviceName)
{
    const auto reply = Post(kGeneral, {{"deviceName", ""}, {"language", ""}});
    EXPECT_TRUE(Has(reply.body, kInvalid)) << reply.body;
    EXPECT_EQ("fieldrouter", StoreGet("net/hostname"));
}

TEST_F(GeneralPage, GeneralStatusReportsTheBoardTemperature)
{
    const Json::Value status = Call("general_dynamic_status");
    EXPECT_EQ("45.7 degrees Celsius\n", status["boardTemp"].asString());
    for (const char* member : {"date", "uptime", "top", "processStatus"})
        EXPECT_TRUE(status[member].isString()) << member;
    EXPECT_FALSE(status["date"].asString().empty());
}

TEST_F(GeneralPage, GeneralStatusWithoutATemperatureFileReadsZero)
{
    Poco::File(DevicePath("/sys/class/hwmon/hwmon0/temp1_input")).remove();
    EXPECT_EQ("0.0 degrees Celsius\n", Call("general_dynamic_status")["boardTemp"].asString());
}

TEST_F(GeneralPage, ALongProcessListIsCutAt10000Bytes)
{
    WriteDeviceFile("/usr/bin/ps", "#!/bin/sh\nyes 'root 1 0 0 08:00 ? 00:00:01 /sbin/init' | head -n 1000\n",
                            true);
    const std::string processes = Call("general_dynamic_status")["processStatus"].asString();
    EXPECT_EQ(10000u, processes.size());
    EXPECT_EQ("...", processes.substr(processes.size() - 3));
}

// panelkit tests: a fixture with the real binary serving a freshly simulated device.
#include "DeviceServerTest.h"

#include "Http.h"

#include <memory>

namespace panelkit::test {

void DeviceServerTest::SetUp()
{
    ASSERT_TRUE(server_.simulateDevice());
    ASSERT_TRUE(server_.start()) << server_.log();
}

Json::Value DeviceServerTest::Call(const std::string& method)
{
    const HttpReply reply = Rpc(server_.port(), "/async/rpc", method);
    Json::Value answer;
    std::string errors;
    const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
    EXPECT_TRUE(reader->parse(reply.body.data(), reply.body.data() + reply.body.size(), &answer, &errors))
        << reply.body;
    EXPECT_TRUE(answer["error"].isNull()) << reply.body;
    return answer["result"];
}

std::string DeviceServerTest::CommandLog() const
{
    return ReadFile(server_.devicePath("/var/log/sim-commands.log"));
}

}  // namespace panelkit::test

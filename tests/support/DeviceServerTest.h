// panelkit tests: a fixture with the real binary serving a freshly simulated device.
#pragma once

#include "Server.h"

#include <gtest/gtest.h>
#include <json/json.h>

#include <string>

namespace panelkit::test {

/// Starts panelkit on a simulated device before each test.
class DeviceServerTest : public ::testing::Test {
protected:
    void SetUp() override;
    /// The result of a JSON-RPC call without parameters, which must answer without error.
    Json::Value Call(const std::string& method);
    /// The programs the device ran, one line each.
    std::string CommandLog() const;

    Server server_;
};

}  // namespace panelkit::test

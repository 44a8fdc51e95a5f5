// The JSON-RPC endpoint of the asynchronous tree, as the page scripts reach it.
#include "Http.h"
#include "Server.h"

#include <gtest/gtest.h>

using namespace panelkit::test;

namespace {

class RpcEndpoint : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(server_.start()) << server_.log(); }
    Server server_;
};

}  // namespace

TEST_F(RpcEndpoint, WrongParameterCountIsRefused)
{
    const HttpReply reply = Rpc(server_.port(), "/async/rpc", "reload", R"(["now"])");
    EXPECT_EQ(200, reply.status);
    EXPECT_EQ(R"({"error":"Invalid parametres number","id":1,"result":null})", reply.body);
    EXPECT_FALSE(server_.work().exists("device/tmp/panelkit_freload_flag"));
}

TEST_F(RpcEndpoint, UnknownMethodGetsAnErrorReply)
{
    const HttpReply reply = Rpc(server_.port(), "/async/rpc", "no_such_method");
    EXPECT_EQ(200, reply.status);
    EXPECT_NE(std::string::npos, reply.body.find(R"("error":"Method not found: no_such_method")")) << reply.body;
}

TEST_F(RpcEndpoint, NotificationIsNotServed)
{
    const HttpReply reply = Http(server_.port(), "POST", "/async/rpc", R"({"method":"reload","params":[]})",
                                 "application/json");
    EXPECT_EQ(400, reply.status);
    EXPECT_FALSE(server_.work().exists("device/tmp/panelkit_freload_flag"));
    EXPECT_EQ(200, Get(server_.port(), "/config/").status);
}

TEST_F(RpcEndpoint, OnlyJsonBodiesAreAccepted)
{
    EXPECT_EQ(415, Http(server_.port(), "POST", "/async/rpc", "method=reload", "application/x-www-form-urlencoded")
                       .status);
    EXPECT_EQ(400, Http(server_.port(), "POST", "/async/rpc", "{\"method\": ", "application/json").status);
    EXPECT_EQ(405, Get(server_.port(), "/async/rpc").status);
}

TEST_F(RpcEndpoint, UnknownPathInTheAsynchronousTreeIsNotFound)
{
    EXPECT_EQ(404, Rpc(server_.port(), "/async/elsewhere", "reload").status);
}

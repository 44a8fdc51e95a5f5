// Request bodies over the limits, malformed bodies, and uploads that must not be left behind.
#include "Http.h"
#include "Server.h"

#include <gtest/gtest.h>

#include <Poco/File.h>

using namespace panelkit::test;

namespace {

class Limits : public ::testing::Test {
protected:
    void SetUp() override
    {
        server_.config()["security"]["content_length_limit"] = 1;        // KiB
        server_.config()["security"]["multipart_form_data_limit"] = 4;   // KiB
        ASSERT_TRUE(server_.start()) << server_.log();
    }

    std::size_t uploadsLeft() const
    {
        std::vector<std::string> names;
        Poco::File(server_.devicePath("/tmp")).list(names);
        std::size_t count = 0;
        for (const auto& name : names)
            count += name.rfind("panelkit-upload-", 0) == 0;
        return count;
    }

    static std::string Multipart(const std::string& boundary, const std::string& content, const std::string& token = "")
    {
        return "--" + boundary + "\r\nContent-Disposition: form-data; name=\"_csrf\"\r\n\r\n" + token + "\r\n" +
               "--" + boundary + "\r\nContent-Disposition: form-data; name=\"image\"; filename=\"fw.bin\"\r\n" +
               "Content-Type: application/octet-stream\r\n\r\n" + content + "\r\n--" + boundary + "--\r\n";
    }

    Server server_;
};

}  // namespace

TEST_F(Limits, OversizedUrlEncodedBodyIsRefusedWith413)
{
    const HttpReply reply =
        Http(server_.port(), "POST", "/config/network/ethernet1", "a=" + std::string(2000, 'x'),
             "application/x-www-form-urlencoded");
    EXPECT_EQ(413, reply.status);
    EXPECT_EQ(200, Get(server_.port(), "/config/").status);
}

TEST_F(Limits, OversizedJsonBodyIsRefusedWith413)
{
    const std::string body = R"({"method":"reload","params":[],"id":")" + std::string(2000, 'x') + "\"}";
    EXPECT_EQ(413, Http(server_.port(), "POST", "/async/rpc", body, "application/json").status);
    EXPECT_FALSE(server_.work().exists("device/tmp/panelkit_freload_flag"));
}

TEST_F(Limits, OversizedUploadIsRefusedWith413AndLeavesNoFile)
{
    const HttpReply reply = Http(server_.port(), "POST", "/config/settings/firmware",
                                 Multipart("b0undary", std::string(8000, 'f')), "multipart/form-data; boundary=b0undary");
    EXPECT_EQ(413, reply.status);
    EXPECT_EQ(0u, uploadsLeft());
}

TEST_F(Limits, UploadWithinTheLimitIsServedAndItsTemporaryFileRemoved)
{
    const FormToken form = OpenForm(server_.port(), "/config/settings/firmware");
    const HttpReply reply =
        Http(server_.port(), "POST", "/config/settings/firmware", Multipart("b0undary", std::string(3000, 'f'), form.token),
             "multipart/form-data; boundary=b0undary", form.headers());
    EXPECT_EQ(200, reply.status);
    EXPECT_EQ(0u, uploadsLeft());
}

TEST_F(Limits, MalformedMultipartIsABadRequestAndTheNextRequestIsServed)
{
    const HttpReply reply = Http(server_.port(), "POST", "/config/settings/firmware", "this is not multipart at all",
                                 "multipart/form-data; boundary=b0undary");
    EXPECT_EQ(400, reply.status);
    EXPECT_EQ(0u, uploadsLeft());
    EXPECT_EQ(200, Get(server_.port(), "/config/network/ethernet1").status);
}

TEST_F(Limits, MalformedUrlEncodingIsABadRequest)
{
    EXPECT_EQ(400, Http(server_.port(), "POST", "/config/network/ethernet1", "a=%zz",
                        "application/x-www-form-urlencoded")
                       .status);
    EXPECT_EQ(200, Get(server_.port(), "/config/").status);
}

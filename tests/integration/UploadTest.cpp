// Uploads through the real binary: one that the client breaks off halfway leaves nothing in the device's
// /tmp and the service answers the next request, on the internal server and behind lighttpd.
#include "DeviceServerTest.h"
#include "Http.h"
#include "Lighttpd.h"
#include "Server.h"

#include <gtest/gtest.h>

#include <Poco/File.h>
#include <Poco/Net/SocketAddress.h>
#include <Poco/Net/StreamSocket.h>

#include <chrono>
#include <functional>
#include <memory>
#include <set>
#include <thread>

using namespace panelkit::test;

namespace {

const std::string kPage = "/config/settings/firmware";
const std::string kBoundary = "----panelkitUploadTest0123456789";

std::set<std::string> Listing(const std::string& folder)
{
    std::vector<std::string> names;
    Poco::File(folder).list(names);
    return {names.begin(), names.end()};
}

std::size_t UploadsIn(const std::string& folder)
{
    std::size_t count = 0;
    for (const auto& name : Listing(folder))
        count += name.rfind("panelkit-upload-", 0) == 0;
    return count;
}

bool WaitUntil(const std::function<bool()>& condition, int timeoutMs)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return true;
}

std::string Text(const std::set<std::string>& names)
{
    std::string text;
    for (const auto& name : names)
        text += name + " ";
    return text;
}

// Opens the firmware form as a browser does and sends a POST announcing an 8 MiB upload, with the
// form token, the file part's headers and the first MiB of its content; the body stays unfinished.
std::unique_ptr<Poco::Net::StreamSocket> StartUpload(int port)
{
    const FormToken form = OpenForm(port, kPage);
    EXPECT_FALSE(form.token.empty()) << "the firmware page handed out no form token";
    const std::string start = "--" + kBoundary + "\r\nContent-Disposition: form-data; name=\"_csrf\"\r\n\r\n" +
                              form.token + "\r\n--" + kBoundary +
                              "\r\nContent-Disposition: form-data; name=\"fwupload\"; filename=\"fw.bin\"\r\n"
                              "Content-Type: application/octet-stream\r\n\r\n";
    const std::size_t declared = 8 * 1024 * 1024;
    const std::string head = "POST " + kPage + " HTTP/1.1\r\nHost: 127.0.0.1\r\nCookie: " + form.cookie +
                             "\r\nContent-Type: multipart/form-data; boundary=" + kBoundary +
                             "\r\nContent-Length: " + std::to_string(declared) + "\r\n\r\n";
    auto socket = std::make_unique<Poco::Net::StreamSocket>(
        Poco::Net::SocketAddress("127.0.0.1", static_cast<Poco::UInt16>(port)));
    const std::string sent = head + start + std::string(1024 * 1024, '\xA5');
    socket->sendBytes(sent.data(), static_cast<int>(sent.size()));
    return socket;
}

// Breaks an upload off halfway: the upload's file must appear while it streams and be gone after,
// with the rest of the device's /tmp as it was.
void BreakOffAnUpload(int port, const std::string& deviceTmp)
{
    const std::set<std::string> before = Listing(deviceTmp);
    std::unique_ptr<Poco::Net::StreamSocket> client = StartUpload(port);
    ASSERT_TRUE(WaitUntil([&] { return UploadsIn(deviceTmp) == 1; }, 10000))
        << "the upload never began to be stored; /tmp holds: " << Text(Listing(deviceTmp));
    client->close();
    EXPECT_TRUE(WaitUntil([&] { return Listing(deviceTmp) == before; }, 10000))
        << "expected /tmp to hold again: " << Text(before) << "\nit holds: " << Text(Listing(deviceTmp));
}

class InternalServerUpload : public DeviceServerTest {
};

class FastCgiUpload : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(fastcgi_.simulateDevice());
        ASSERT_TRUE(fastcgi_.start()) << fastcgi_.log();
        lighttpd_ = std::make_unique<Lighttpd>(fastcgi_.socket(), std::vector<std::string>{"/config", "/async"});
    }

    Server fastcgi_{"fastcgi"};
    std::unique_ptr<Lighttpd> lighttpd_;
};

}  // namespace

TEST_F(InternalServerUpload, BrokenOffUploadLeavesNoFileAndTheNextRequestIsAnswered)
{
    BreakOffAnUpload(server_.port(), server_.devicePath("/tmp"));
    EXPECT_TRUE(WaitForText(server_.logPath(), "the body ends before its closing boundary", 5000)) << server_.log();
    EXPECT_EQ(200, Get(server_.port(), kPage).status);
}

TEST_F(FastCgiUpload, BrokenOffUploadLeavesNoFileAndTheNextRequestIsAnswered)
{
    BreakOffAnUpload(lighttpd_->port(), fastcgi_.devicePath("/tmp"));
    EXPECT_TRUE(WaitForText(fastcgi_.logPath(), "the body ends before its closing boundary", 5000)) << fastcgi_.log();
    EXPECT_EQ(200, Get(lighttpd_->port(), kPage).status);
}

TEST_F(FastCgiUpload, WholeUploadStreamsThroughLighttpdAndLeavesNoFile)
{
    const FormToken form = OpenForm(lighttpd_->port(), kPage);
    ASSERT_FALSE(form.token.empty());
    const std::string body = "--" + kBoundary + "\r\nContent-Disposition: form-data; name=\"_csrf\"\r\n\r\n" +
                             form.token + "\r\n--" + kBoundary +
                             "\r\nContent-Disposition: form-data; name=\"fwupload\"; filename=\"fw.bin\"\r\n\r\n" +
                             std::string(3 * 1024 * 1024, 'f') + "\r\n--" + kBoundary + "--\r\n";
    const HttpReply reply = Http(lighttpd_->port(), "POST", kPage, body, "multipart/form-data; boundary=" + kBoundary,
                                 form.headers());
    EXPECT_EQ(200, reply.status) << reply.body;
    EXPECT_EQ(0u, UploadsIn(fastcgi_.devicePath("/tmp")));
}

// The internal server's connections as raw HTTP/1.1 sees them: keep-alive, pipelining, HEAD,
// interim replies, chunked bodies, closing, malformed requests and stopping.
#include "Http.h"
#include "Server.h"

#include <gtest/gtest.h>

#include <Poco/Net/NetException.h>
#include <Poco/Net/StreamSocket.h>
#include <Poco/NumberParser.h>
#include <Poco/String.h>

using namespace panelkit::test;

namespace {

struct RawReply {
    std::string head;  // status line and headers, without the blank line
    std::string body;
    int status() const { return head.size() > 12 ? std::stoi(head.substr(9, 3)) : 0; }
    bool has(const std::string& text) const { return head.find(text) != std::string::npos; }
};

// A client socket reading replies one at a time, whatever was pipelined behind them.
class Client {
public:
    explicit Client(int port) : socket_(Poco::Net::SocketAddress("127.0.0.1", static_cast<Poco::UInt16>(port)))
    {
        socket_.setReceiveTimeout(Poco::Timespan(10, 0));
    }

    void send(const std::string& raw) { socket_.sendBytes(raw.data(), static_cast<int>(raw.size())); }

    // The next reply; a HEAD reply is read without a body.
    RawReply read(bool withBody = true)
    {
        RawReply reply;
        std::size_t end;
        while ((end = pending_.find("\r\n\r\n")) == std::string::npos)
            if (!fill())
                return reply;
        reply.head = pending_.substr(0, end);
        pending_.erase(0, end + 4);
        if (!withBody)
            return reply;
        const std::size_t length = lengthOf(reply.head);
        while (pending_.size() < length)
            if (!fill())
                break;
        reply.body = pending_.substr(0, length);
        pending_.erase(0, std::min(length, pending_.size()));
        return reply;
    }

    // True when the server closed the connection (before the wait ran out).
    bool closedWithin(int seconds)
    {
        socket_.setReceiveTimeout(Poco::Timespan(seconds, 0));
        try {
            char byte;
            return socket_.receiveBytes(&byte, 1) == 0;
        } catch (const Poco::TimeoutException&) {
            return false;
        } catch (const Poco::Net::ConnectionResetException&) {
            return true;
        }
    }

    const std::string& pending() const { return pending_; }

private:
    static std::size_t lengthOf(const std::string& head)
    {
        const std::string name = "\r\ncontent-length: ";
        const auto at = Poco::toLower(head).find(name);
        if (at == std::string::npos)
            return 0;
        return Poco::NumberParser::parseUnsigned(head.substr(at + name.size(), head.find("\r\n", at + 2) - at - name.size()));
    }

    bool fill()
    {
        char buffer[8192];
        const int got = socket_.receiveBytes(buffer, sizeof buffer);
        if (got <= 0)
            return false;
        pending_.append(buffer, static_cast<std::size_t>(got));
        return true;
    }

    Poco::Net::StreamSocket socket_;
    std::string pending_;
};

const char kDnsPage[] = "GET /config/network/dns_server HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n";

class Connections : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(server_.start()) << server_.log(); }
    Server server_;
};

}  // namespace

TEST_F(Connections, TwoRequestsOneAfterTheOtherShareOneConnection)
{
    Client client(server_.port());
    for (int i = 0; i < 2; ++i) {
        client.send(kDnsPage);
        const RawReply reply = client.read();
        EXPECT_EQ(200, reply.status()) << reply.head;
        EXPECT_TRUE(reply.has("Connection: Keep-Alive")) << reply.head;
        EXPECT_NE(std::string::npos, reply.body.find("Custom DNS Servers")) << "request " << i;
    }
}

TEST_F(Connections, PipelinedRequestsAreAnsweredInTheirOrder)
{
    Client client(server_.port());
    client.send(std::string(kDnsPage) + "GET /async/rpc HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n" + kDnsPage);
    EXPECT_EQ(200, client.read().status());
    EXPECT_EQ(405, client.read().status());
    const RawReply third = client.read();
    EXPECT_EQ(200, third.status());
    EXPECT_NE(std::string::npos, third.body.find("</html>"));
}

TEST_F(Connections, HeadGivesTheLengthOfThePageButNoBody)
{
    Client client(server_.port());
    client.send("HEAD /config/network/dns_server HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n" + std::string(kDnsPage));
    const RawReply head = client.read(false);
    EXPECT_EQ(200, head.status());
    EXPECT_FALSE(head.has("Content-Length: 0\r")) << head.head;
    const RawReply page = client.read();
    EXPECT_EQ(200, page.status()) << "the GET's reply follows the HEAD's headers at once";
    EXPECT_NE(std::string::npos, page.body.find("</html>"));
}

TEST_F(Connections, ABodyAnnouncedWithExpectContinueIsInvitedThenServed)
{
    Client client(server_.port());
    const std::string body = R"({"method":"dns_server_status","params":[],"id":4})";
    client.send("POST /async/rpc HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Type: application/json\r\n"
                "Expect: 100-continue\r\nContent-Length: " +
                std::to_string(body.size()) + "\r\n\r\n");
    EXPECT_EQ(100, client.read(false).status());
    client.send(body);
    const RawReply reply = client.read();
    EXPECT_EQ(200, reply.status()) << reply.head;
    EXPECT_NE(std::string::npos, reply.body.find(R"("currentConf")")) << reply.body;
}

TEST_F(Connections, AChunkedBodyArrivesWhole)
{
    Client client(server_.port());
    const std::string first = R"({"method":"dns_server_st)";
    const std::string second = R"(atus","params":[],"id":7})";
    auto hex = [](std::size_t n) {
        char text[16];
        std::snprintf(text, sizeof text, "%zx", n);
        return std::string(text);
    };
    client.send("POST /async/rpc HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Type: application/json\r\n"
                "Transfer-Encoding: chunked\r\n\r\n" +
                hex(first.size()) + "\r\n" + first + "\r\n" + hex(second.size()) + "\r\n" + second + "\r\n0\r\n\r\n");
    const RawReply reply = client.read();
    EXPECT_EQ(200, reply.status()) << reply.head;
    EXPECT_NE(std::string::npos, reply.body.find(R"("id":7)")) << reply.body;
    EXPECT_NE(std::string::npos, reply.body.find(R"("currentConf")")) << reply.body;
    client.send(kDnsPage);
    EXPECT_EQ(200, client.read().status()) << "the connection goes on after the last chunk";
}

TEST_F(Connections, ConnectionCloseIsHonoured)
{
    Client client(server_.port());
    client.send("GET /config/ HTTP/1.1\r\nHost: 127.0.0.1\r\nConnection: close\r\n\r\n");
    const RawReply reply = client.read();
    EXPECT_EQ(200, reply.status());
    EXPECT_TRUE(reply.has("Connection: close")) << reply.head;
    EXPECT_TRUE(client.closedWithin(3));
}

TEST_F(Connections, AnHttp10ClientIsAnsweredAndClosed)
{
    Client client(server_.port());
    client.send("GET /config/ HTTP/1.0\r\n\r\n");
    EXPECT_EQ(200, client.read().status());
    EXPECT_TRUE(client.closedWithin(3));
}

TEST_F(Connections, AMalformedRequestIsABadRequestAndEndsTheConnection)
{
    Client client(server_.port());
    client.send(std::string("GET /config/ HTTP/1.1\r\n") + std::string(300, 'X') + ": " + "\r\n\r\n" + kDnsPage);
    const RawReply reply = client.read();
    EXPECT_EQ(400, reply.status()) << reply.head;
    EXPECT_TRUE(client.closedWithin(3)) << "nothing behind a malformed request is taken for a request";
    EXPECT_EQ(200, Get(server_.port(), "/config/").status);
}

TEST_F(Connections, AContentLengthThatIsNotALengthIsABadRequest)
{
    for (const std::string length : {"abc", "-5"}) {
        Client client(server_.port());
        client.send("POST /async/rpc HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Type: application/json\r\n"
                    "Content-Length: " + length + "\r\n\r\n{}");
        const RawReply reply = client.read();
        EXPECT_EQ(400, reply.status()) << length;
        EXPECT_NE(std::string::npos, reply.body.find("Content-Length is not a length")) << reply.body;
        EXPECT_TRUE(client.closedWithin(3));
    }
    EXPECT_EQ(200, Get(server_.port(), "/config/").status);
}

TEST_F(Connections, AnOversizedBodyIsRefusedAndTheConnectionClosed)
{
    Client client(server_.port());
    client.send("POST /async/rpc HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Type: application/json\r\n"
                "Content-Length: 5000000\r\n\r\n{");
    EXPECT_EQ(413, client.read().status());
    EXPECT_TRUE(client.closedWithin(3));
}

TEST_F(Connections, AnIdleConnectionIsEndedWhenTheServiceReloads)
{
    Client idle(server_.port());
    idle.send(kDnsPage);
    ASSERT_EQ(200, idle.read().status());
    EXPECT_EQ(200, Rpc(server_.port(), "/async/rpc", "reload").status);
    // Well before the keep-alive runs out: stopping ends idle connections instead of waiting for them.
    EXPECT_TRUE(idle.closedWithin(3));
    ASSERT_TRUE(server_.waitReady()) << server_.log();
    EXPECT_EQ(200, Get(server_.port(), "/config/").status);
}

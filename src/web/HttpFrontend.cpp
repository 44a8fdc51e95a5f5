// panelkit web layer: the internal HTTP server front end: HTTP/1.1 with keep-alive on POCO's TCP
// server, reading request heads through POCO's HTTP message classes and bodies from its session.
#include "web/HttpFrontend.h"

#include "web/RequestBodyBuffer.h"
#include "web/Listener.h"
#include "web/Log.h"
#include "web/Request.h"
#include "web/RequestParser.h"
#include "web/Response.h"
#include "web/Service.h"

#include <Poco/Exception.h>
#include <Poco/Net/HTTPChunkedStream.h>
#include <Poco/Net/HTTPHeaderStream.h>
#include <Poco/Net/HTTPRequest.h>
#include <Poco/Net/HTTPServerParams.h>
#include <Poco/Net/HTTPServerSession.h>
#include <Poco/Net/HTTPStream.h>
#include <Poco/Net/NetException.h>
#include <Poco/Net/ServerSocket.h>
#include <Poco/Net/TCPServer.h>
#include <Poco/Net/TCPServerConnection.h>
#include <Poco/Net/TCPServerConnectionFactory.h>
#include <Poco/ThreadPool.h>
#include <Poco/URI.h>

#include <sys/socket.h>
#include <sys/uio.h>

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <mutex>
#include <set>

namespace panelkit::web {

namespace {

// An idle keep-alive connection holds a thread: it is given up after this long.
const Poco::Timespan kKeepAlive(5, 0);
// A request once started may pause this long between two packets of its body.
const Poco::Timespan kBodyPause(30, 0);

// The session's read buffer, with the look-ahead that tells a new request from a closed connection.
class Session : public Poco::Net::HTTPServerSession {
public:
    using HTTPServerSession::HTTPServerSession;
    using HTTPServerSession::peek;
    using HTTPServerSession::read;
};

// A body of a declared length, read from the session: what the session holds first, then the socket,
// in as few receives as the socket allows.
class FixedLengthBody : public RequestBodyBuffer {
public:
    FixedLengthBody(Session& session, std::int64_t length) : session_(session), left_(length) {}

protected:
    std::streamsize Receive(char* to, std::streamsize count) override
    {
        const std::int64_t want = std::min<std::int64_t>({count, left_, 1 << 30});
        if (want <= 0)
            return 0;
        const int got = session_.read(to, want);
        if (got > 0)
            left_ -= got;
        return got;
    }

private:
    Session& session_;
    std::int64_t left_;
};

// The stream of a FixedLengthBody.
class FixedLengthStream : public std::istream {
public:
    FixedLengthStream(Session& session, std::int64_t length) : std::istream(nullptr), body_(session, length)
    {
        rdbuf(&body_);
    }

private:
    FixedLengthBody body_;
};

// Writes every byte of the pieces in as few system calls as the socket allows; false when the
// peer is gone or the send timed out.
bool SendAll(Poco::Net::StreamSocket& socket, iovec* pieces, int count)
{
    while (count > 0) {
        msghdr message{};
        message.msg_iov = pieces;
        message.msg_iovlen = static_cast<std::size_t>(count);
        const ssize_t sent = ::sendmsg(socket.impl()->sockfd(), &message, MSG_NOSIGNAL);
        if (sent < 0 && errno == EINTR)
            continue;
        if (sent <= 0)
            return false;
        auto left = static_cast<std::size_t>(sent);
        for (; count > 0 && left >= pieces->iov_len; --count, ++pieces)
            left -= pieces->iov_len;
        if (count > 0) {
            pieces->iov_base = static_cast<char*>(pieces->iov_base) + left;
            pieces->iov_len -= left;
        }
    }
    return true;
}

bool SendAll(Poco::Net::StreamSocket& socket, const std::string& head, const char* body = nullptr,
             std::size_t length = 0)
{
    iovec pieces[2] = {{const_cast<char*>(head.data()), head.size()}, {const_cast<char*>(body), length}};
    return SendAll(socket, pieces, length ? 2 : 1);
}

// The status line and headers of a reply whose body is `length` bytes long.
using Headers = std::vector<std::pair<std::string, std::string>>;

std::string Head(int status, const std::string& contentType, const Headers& headers, std::uint64_t length,
                 bool keepAlive)
{
    std::string head;
    head.reserve(512);
    head.append("HTTP/1.1 ").append(std::to_string(status)).append(" ").append(Response::Reason(status));
    head.append(keepAlive ? "\r\nConnection: Keep-Alive" : "\r\nConnection: close");
    head.append("\r\nContent-Type: ").append(contentType);
    for (const auto& header : headers)
        head.append("\r\n").append(header.first).append(": ").append(header.second);
    head.append("\r\nContent-Length: ").append(std::to_string(length)).append("\r\n\r\n");
    return head;
}

// Sends the reply in one write when it is held in memory, or its head and then the file.
bool Send(Poco::Net::StreamSocket& socket, const Response& reply, bool keepAlive, bool withBody)
{
    if (reply.file().empty()) {
        const std::string head =
            Head(reply.status(), reply.contentType(), reply.headers(), reply.body().size(), keepAlive);
        return SendAll(socket, head, withBody ? reply.body().data() : nullptr, withBody ? reply.body().size() : 0);
    }
    std::ifstream file(reply.file(), std::ios::binary | std::ios::ate);
    if (!file) {
        static const std::string missing = "404 Not Found\n";
        const std::string head = Head(404, "text/plain; charset=utf-8", {}, missing.size(), keepAlive);
        return SendAll(socket, head, withBody ? missing.data() : nullptr, withBody ? missing.size() : 0);
    }
    const auto size = static_cast<std::uint64_t>(file.tellg());
    file.seekg(0);
    if (!SendAll(socket, Head(reply.status(), reply.contentType(), reply.headers(), size, keepAlive)))
        return false;
    if (!withBody)
        return true;
    // No more than the length announced: a log may grow while it is sent.
    char chunk[64 * 1024];
    for (std::uint64_t left = size; left > 0;) {
        file.read(chunk, static_cast<std::streamsize>(std::min<std::uint64_t>(left, sizeof chunk)));
        const auto got = static_cast<std::size_t>(file.gcount());
        if (got == 0)
            break;
        left -= got;
        iovec piece{chunk, got};
        if (!SendAll(socket, &piece, 1))
            return false;
    }
    return true;
}

// The body of the request as read from the session; length is the declared Content-Length, -1 when
// none. Chunked bodies and bodies ending with the connection (no browser sends an upload so) are
// read by POCO's stream classes.
std::unique_ptr<std::istream> BodyOf(const Poco::Net::HTTPRequest& head, std::int64_t length, Session& session)
{
    if (head.getChunkedTransferEncoding())
        return std::make_unique<Poco::Net::HTTPChunkedInputStream>(session);
    if (length >= 0)
        return std::make_unique<FixedLengthStream>(session, length);
    const std::string& method = head.getMethod();
    if (method == "GET" || method == "HEAD" || method == "DELETE")
        return std::make_unique<FixedLengthStream>(session, 0);
    // No length and not chunked: the body ends when the client closes its side.
    return std::make_unique<Poco::Net::HTTPInputStream>(session);
}

// The declared Content-Length, -1 when none, -2 when it is not a length.
std::int64_t DeclaredLength(const Poco::Net::HTTPRequest& head)
{
    if (!head.hasContentLength())
        return -1;
    try {
        const std::int64_t length = head.getContentLength64();
        return length < 0 ? -2 : length;
    } catch (const Poco::Exception&) {
        return -2;
    }
}

}  // namespace

// The connections being served, so that stopping can end the idle ones at once and the busy ones
// after their reply.
class HttpFrontend::Connections {
public:
    /// Marks the socket as waiting for a request; false once the server is stopping.
    bool Idle(Poco::Net::StreamSocket& socket)
    {
        std::lock_guard<std::mutex> guard(lock_);
        if (stopping_)
            return false;
        idle_.insert(&socket);
        return true;
    }
    /// Marks the socket as serving a request (or gone); false once the server is stopping.
    bool Busy(Poco::Net::StreamSocket& socket)
    {
        std::lock_guard<std::mutex> guard(lock_);
        idle_.erase(&socket);
        return !stopping_;
    }
    /// Refuses new requests and ends the wait of every idle connection.
    void Stop()
    {
        std::lock_guard<std::mutex> guard(lock_);
        stopping_ = true;
        for (auto* socket : idle_) {
            try {
                socket->shutdownReceive();
            } catch (const Poco::Exception&) {
                // Already closed by the peer.
            }
        }
    }

private:
    std::mutex lock_;
    bool stopping_ = false;
    std::set<Poco::Net::StreamSocket*> idle_;
};

namespace {

// One client connection: requests one after the other until either side closes it.
class Connection : public Poco::Net::TCPServerConnection {
public:
    Connection(const Poco::Net::StreamSocket& socket, Service& service, HttpFrontend::Connections& connections,
               const Poco::Net::HTTPServerParams::Ptr& params)
        : TCPServerConnection(socket), service_(service), connections_(connections), params_(params)
    {
    }

    void run() override
    {
        Poco::Net::StreamSocket& client = socket();
        try {
            const std::string address = client.peerAddress().host().toString();
            Session session(client, params_);
            // After the session, which sets its own timeouts on the socket.
            client.setNoDelay(true);
            client.setReceiveTimeout(kKeepAlive);
            client.setSendTimeout(kBodyPause);
            while (connections_.Idle(client)) {
                const bool more = session.peek() != std::char_traits<char>::eof();
                if (!connections_.Busy(client) || !more || !serveOne(session, client, address))
                    break;
            }
        } catch (const Poco::Exception&) {
            // A client that went away or went quiet; nothing to answer.
        } catch (const std::exception& e) {
            PK_ERROR() << "HTTP connection ended: " << e.what();
        }
        connections_.Busy(client);
    }

private:
    // Reads, answers and sends one request; false when the connection must close afterwards.
    bool serveOne(Session& session, Poco::Net::StreamSocket& client, const std::string& address)
    {
        Poco::Net::HTTPRequest head;
        Response reply;
        try {
            Poco::Net::HTTPHeaderInputStream headers(session);
            head.read(headers);
        } catch (const Poco::Net::NoMessageException&) {
            return false;
        } catch (const Poco::Net::MessageException& e) {
            reply.errorPage(400, "Malformed request: " + e.message());
            Send(client, reply, false, true);
            return false;
        }
        answer(head, session, client, address, reply);
        const bool keepAlive = head.getKeepAlive() && !reply.closesConnection();
        return Send(client, reply, keepAlive, head.getMethod() != "HEAD") && keepAlive;
    }

    // Builds the reply to the request. The request, with the files uploaded for it, is gone when
    // this returns: before the client can see the reply.
    void answer(const Poco::Net::HTTPRequest& head, Session& session, Poco::Net::StreamSocket& client,
                const std::string& address, Response& reply)
    {
        Request request;
        try {
            const Poco::URI uri(head.getURI());
            request.setHead(head.getMethod(), uri.getPath(), uri.getRawQuery(), address);
        } catch (const Poco::Exception& e) {
            reply.errorPage(400, "Malformed URL: " + e.message());
            reply.closeConnection();
            return;
        }
        for (const auto& header : head)
            request.mutableHeaders().add(header.first, header.second);

        const std::int64_t length = DeclaredLength(head);
        if (length == -2) {
            reply.errorPage(400, "Malformed request: Content-Length is not a length");
            reply.closeConnection();
            return;
        }
        const bool hasBody = head.getChunkedTransferEncoding() || length > 0;
        if (hasBody)
            client.setReceiveTimeout(kBodyPause);
        if (head.getExpectContinue())
            SendAll(client, "HTTP/1.1 100 Continue\r\n\r\n");
        const auto body = BodyOf(head, length, session);
        std::string problem;
        const int status = RequestParser::Parse(request, *body, length, service_.limits(), problem);
        if (hasBody)
            client.setReceiveTimeout(kKeepAlive);
        if (status != 0) {
            PK_INFO() << "Refused " << head.getMethod() << " " << request.path() << ": " << problem;
            reply.errorPage(status, problem);
            // The rest of an unread body would be taken for the next request.
            reply.closeConnection();
            return;
        }
        service_.handle(request, reply);
    }

    Service& service_;
    HttpFrontend::Connections& connections_;
    Poco::Net::HTTPServerParams::Ptr params_;
};

class ConnectionFactory : public Poco::Net::TCPServerConnectionFactory {
public:
    ConnectionFactory(Service& service, HttpFrontend::Connections& connections)
        : service_(service), connections_(connections), params_(new Poco::Net::HTTPServerParams)
    {
    }

    Poco::Net::TCPServerConnection* createConnection(const Poco::Net::StreamSocket& socket) override
    {
        return new Connection(socket, service_, connections_, params_);
    }

private:
    Service& service_;
    HttpFrontend::Connections& connections_;
    Poco::Net::HTTPServerParams::Ptr params_;
};

}  // namespace

HttpFrontend::HttpFrontend(Service& service) : service_(service)
{
}

HttpFrontend::~HttpFrontend()
{
    stop();
}

void HttpFrontend::start()
{
    const Settings& settings = service_.settings();
    const std::string ip = settings.get("service.ip", "127.0.0.1");
    const int port = settings.get("service.port", 8080);
    // Idle keep-alive connections hold a thread each, so there are more connection
    // threads than application workers; the applications pool bounds the latter.
    const int threads = settings.get("service.http_threads", std::max(16, 2 * service_.workerThreads()));

    listener_ = std::make_unique<Poco::Net::ServerSocket>(ListenTcp(ip, port, "http"));

    auto* params = new Poco::Net::TCPServerParams;
    params->setMaxThreads(threads);
    params->setMaxQueued(256);

    // Every thread is made at start: serving never creates one.
    threads_ = std::make_unique<Poco::ThreadPool>(threads, threads);
    connections_ = std::make_unique<Connections>();
    server_ = std::make_unique<Poco::Net::TCPServer>(new ConnectionFactory(service_, *connections_), *threads_,
                                                      *listener_, params);
    server_->start();
}

void HttpFrontend::stop()
{
    if (!server_)
        return;
    // No new connections (a client knocking meanwhile is refused, not left in the backlog);
    // idle ones end now, busy ones after the reply they are writing.
    server_->stop();
    listener_->close();
    connections_->Stop();
    threads_->joinAll();
    server_.reset();
    threads_.reset();
    connections_.reset();
    listener_.reset();
}

}  // namespace panelkit::web

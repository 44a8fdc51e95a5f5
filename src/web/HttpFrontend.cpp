// panelkit web layer: the internal HTTP server front end (POCO's HTTPServer).
#include "web/HttpFrontend.h"

#include "web/Log.h"
#include "web/Request.h"
#include "web/RequestParser.h"
#include "web/Response.h"
#include "web/Service.h"

#include <Poco/Exception.h>
#include <Poco/Net/HTTPRequestHandler.h>
#include <Poco/Net/HTTPRequestHandlerFactory.h>
#include <Poco/Net/HTTPServer.h>
#include <Poco/Net/HTTPServerParams.h>
#include <Poco/Net/HTTPServerRequest.h>
#include <Poco/Net/HTTPServerResponse.h>
#include <Poco/Net/ServerSocket.h>
#include <Poco/ThreadPool.h>
#include <Poco/URI.h>

#include <sys/stat.h>

namespace panelkit::web {

namespace {

void Send(const Response& reply, Poco::Net::HTTPServerResponse& out)
{
    out.setStatusAndReason(static_cast<Poco::Net::HTTPResponse::HTTPStatus>(reply.status()));
    out.setContentType(reply.contentType());
    for (const auto& header : reply.headers())
        out.add(header.first, header.second);
    if (reply.closesConnection())
        out.setKeepAlive(false);
    if (reply.file().empty()) {
        out.sendBuffer(reply.body().data(), reply.body().size());
        return;
    }
    struct stat info {};
    if (::stat(reply.file().c_str(), &info) != 0) {
        out.setStatusAndReason(Poco::Net::HTTPResponse::HTTP_NOT_FOUND);
        out.setContentType("text/plain; charset=utf-8");
        out.erase("Content-Disposition");
        static const char missing[] = "404 Not Found\n";
        out.sendBuffer(missing, sizeof missing - 1);
        return;
    }
    out.sendFile(reply.file(), reply.contentType());
}

class Handler : public Poco::Net::HTTPRequestHandler {
public:
    explicit Handler(Service& service) : service_(service) {}

    void handleRequest(Poco::Net::HTTPServerRequest& in, Poco::Net::HTTPServerResponse& out) override
    {
        Request request;
        Response reply;
        std::string path;
        std::string query;
        try {
            const Poco::URI uri(in.getURI());
            path = uri.getPath();
            query = uri.getRawQuery();
        } catch (const Poco::Exception& e) {
            reply.errorPage(400, "Malformed URL: " + e.message());
            reply.closeConnection();
            Send(reply, out);
            return;
        }
        request.setHead(in.getMethod(), std::move(path), std::move(query), in.clientAddress().host().toString());
        for (const auto& header : in)
            request.mutableHeaders().add(header.first, header.second);

        const std::int64_t length = in.hasContentLength() ? in.getContentLength64() : -1;
        std::string problem;
        const int status = RequestParser::Parse(request, in.stream(), length, service_.limits(), problem);
        if (status != 0) {
            PK_INFO() << "Refused " << in.getMethod() << " " << request.path() << ": " << problem;
            reply.errorPage(status, problem);
            // The rest of an unread body would be taken for the next request.
            reply.closeConnection();
        } else {
            service_.handle(request, reply);
        }
        Send(reply, out);
    }

private:
    Service& service_;
};

class HandlerFactory : public Poco::Net::HTTPRequestHandlerFactory {
public:
    explicit HandlerFactory(Service& service) : service_(service) {}

    Poco::Net::HTTPRequestHandler* createRequestHandler(const Poco::Net::HTTPServerRequest&) override
    {
        return new Handler(service_);
    }

private:
    Service& service_;
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

    Poco::Net::ServerSocket socket;
    socket.bind(Poco::Net::SocketAddress(ip, static_cast<Poco::UInt16>(port)), true);
    socket.listen(64);

    auto* params = new Poco::Net::HTTPServerParams;
    params->setMaxThreads(threads);
    params->setMaxQueued(256);
    params->setKeepAlive(true);
    params->setKeepAliveTimeout(Poco::Timespan(5, 0));
    params->setTimeout(Poco::Timespan(30, 0));
    params->setServerName("panelkit");

    // Every thread is made at start: serving never creates one.
    threads_ = std::make_unique<Poco::ThreadPool>(threads, threads);
    server_ = std::make_unique<Poco::Net::HTTPServer>(new HandlerFactory(service_), *threads_, socket, params);
    server_->start();
    PK_INFO() << "Serving HTTP on " << ip << ":" << port;
}

void HttpFrontend::stop()
{
    if (!server_)
        return;
    // Connections finish the request they are serving, then close.
    server_->stopAll(false);
    threads_->joinAll();
    server_.reset();
    threads_.reset();
}

}  // namespace panelkit::web

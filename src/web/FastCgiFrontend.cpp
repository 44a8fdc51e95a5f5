// panelkit web layer: the FastCGI front end (libfcgi), for running behind the device's web server.
#include "web/FastCgiFrontend.h"

#include "web/RequestBodyBuffer.h"
#include "web/Listener.h"
#include "web/Log.h"
#include "web/Request.h"
#include "web/RequestParser.h"
#include "web/Response.h"
#include "web/Service.h"

#include <fcgiapp.h>

#include <Poco/String.h>

#include <algorithm>
#include <fcntl.h>
#include <fstream>
#include <mutex>
#include <sys/socket.h>
#include <unistd.h>

namespace panelkit::web {

namespace {

std::once_flag g_fcgiInit;

std::string Param(const FCGX_Request& request, const char* name)
{
    const char* value = FCGX_GetParam(name, request.envp);
    return value ? std::string(value) : std::string();
}

// "HTTP_USER_AGENT" → "User-Agent".
std::string HeaderName(const char* variable, std::size_t length)
{
    std::string name;
    bool upper = true;
    for (std::size_t i = 0; i < length; ++i) {
        const char c = variable[i];
        if (c == '_') {
            name.push_back('-');
            upper = true;
            continue;
        }
        name.push_back(upper ? c : static_cast<char>(Poco::Ascii::toLower(c)));
        upper = false;
    }
    return name;
}

void CopyHeaders(const FCGX_Request& in, Request& request)
{
    for (char** entry = in.envp; *entry; ++entry) {
        const char* eq = std::strchr(*entry, '=');
        if (!eq)
            continue;
        const std::size_t length = static_cast<std::size_t>(eq - *entry);
        if (length > 5 && std::strncmp(*entry, "HTTP_", 5) == 0)
            request.mutableHeaders().add(HeaderName(*entry + 5, length - 5), eq + 1);
        else if (length == 12 && std::strncmp(*entry, "CONTENT_TYPE", 12) == 0)
            request.mutableHeaders().add("Content-Type", eq + 1);
        else if (length == 14 && std::strncmp(*entry, "CONTENT_LENGTH", 14) == 0)
            request.mutableHeaders().add("Content-Length", eq + 1);
    }
}

// Reads the request body straight from the FastCGI stream.
class InputBuffer : public RequestBodyBuffer {
public:
    explicit InputBuffer(FCGX_Stream* in) : in_(in) {}

protected:
    std::streamsize Receive(char* to, std::streamsize count) override
    {
        const auto want = static_cast<int>(std::min<std::streamsize>(count, 1 << 30));
        return std::max(FCGX_GetStr(to, want, in_), 0);
    }

private:
    FCGX_Stream* in_;
};

void Put(FCGX_Stream* out, const std::string& text)
{
    FCGX_PutStr(text.data(), static_cast<int>(text.size()), out);
}

void Send(const Response& reply, FCGX_Stream* out)
{
    std::ifstream file;
    std::string head = "Status: " + std::to_string(reply.status()) + " " + Response::Reason(reply.status()) + "\r\n";
    if (!reply.file().empty()) {
        file.open(reply.file(), std::ios::binary);
        if (!file) {
            Put(out, "Status: 404 Not Found\r\nContent-Type: text/plain; charset=utf-8\r\n\r\n404 Not Found\n");
            return;
        }
    }
    head += "Content-Type: " + reply.contentType() + "\r\n";
    for (const auto& header : reply.headers())
        head += header.first + ": " + header.second + "\r\n";
    if (reply.file().empty())
        head += "Content-Length: " + std::to_string(reply.body().size()) + "\r\n";
    head += "\r\n";
    Put(out, head);
    if (reply.file().empty()) {
        Put(out, reply.body());
        return;
    }
    char chunk[64 * 1024];
    while (file.read(chunk, sizeof chunk), file.gcount() > 0)
        FCGX_PutStr(chunk, static_cast<int>(file.gcount()), out);
}

// Reads what the web server sent after the body (the end of the input); true when all of it was read.
bool Drain(FCGX_Stream* in)
{
    char rest[512];
    while (FCGX_GetStr(rest, sizeof rest, in) > 0) {
    }
    return FCGX_HasSeenEOF(in) == EOF;
}

// Builds the reply; false when the body was refused and left unread. The request, with the files
// uploaded for it, is gone when this returns: before the web server can pass the reply on.
bool Answer(Service& service, FCGX_Request& in, Response& reply)
{
    Request request;
    request.setHead(Param(in, "REQUEST_METHOD"), Param(in, "SCRIPT_NAME") + Param(in, "PATH_INFO"),
                    Param(in, "QUERY_STRING"), Param(in, "REMOTE_ADDR"));
    CopyHeaders(in, request);
    const std::string lengthText = Param(in, "CONTENT_LENGTH");
    std::int64_t length = -1;
    if (!lengthText.empty()) {
        char* end = nullptr;
        length = std::strtoll(lengthText.c_str(), &end, 10);
        if (*end != '\0' || length < 0)
            length = -1;
    }
    InputBuffer buffer(in.in);
    std::istream body(&buffer);
    std::string problem;
    const int status = RequestParser::Parse(request, body, length, service.limits(), problem);
    if (status != 0) {
        PK_INFO() << "Refused " << request.method() << " " << request.path() << ": " << problem;
        reply.errorPage(status, problem);
        return false;
    }
    service.handle(request, reply);
    return true;
}

// Answers one request; true when its whole input was read.
bool Serve(Service& service, FCGX_Request& in)
{
    Response reply;
    const bool parsed = Answer(service, in, reply);
    Send(reply, in.out);
    // What is left of a refused body is not read: the connection is closed lingering.
    return parsed && Drain(in.in);
}

}  // namespace

FastCgiFrontend::FastCgiFrontend(Service& service) : service_(service)
{
}

FastCgiFrontend::~FastCgiFrontend()
{
    stop();
}

void FastCgiFrontend::start()
{
    std::call_once(g_fcgiInit, [] { FCGX_Init(); });
    const Settings& settings = service_.settings();
    socketPath_ = settings.get("service.socket", "");
    if (socketPath_.empty()) {
        // libfcgi would take port 0 for a socket path, so TCP is bound here; the workers own a
        // descriptor of their own, not inherited by the programs the service starts.
        const Poco::Net::ServerSocket tcp =
            ListenTcp(settings.get("service.ip", "127.0.0.1"), settings.get("service.port", 8080), "fastcgi");
        listenFd_ = ::fcntl(tcp.impl()->sockfd(), F_DUPFD_CLOEXEC, 0);
        if (listenFd_ < 0)
            throw Error("FastCGI: cannot listen on " + tcp.address().toString());
    } else {
        ::unlink(socketPath_.c_str());  // left over from a previous pass or run
        listenFd_ = FCGX_OpenSocket(socketPath_.c_str(), 64);
        if (listenFd_ < 0)
            throw Error("FastCGI: cannot listen on " + socketPath_);
        PK_INFO() << "listening on unix:" << socketPath_;
    }
    stopping_ = false;
    for (int i = 0; i < service_.workerThreads(); ++i)
        workers_.emplace_back([this] { work(); });
}

void FastCgiFrontend::stop()
{
    if (listenFd_ < 0)
        return;
    // Shutting the listening socket down ends every worker's accept (the kernel hands each
    // connection to one waiting worker, so they need no lock of their own meanwhile).
    stopping_ = true;
    ::shutdown(listenFd_, SHUT_RDWR);
    for (auto& worker : workers_)
        worker.join();
    workers_.clear();
    ::close(listenFd_);
    listenFd_ = -1;
    if (!socketPath_.empty())
        ::unlink(socketPath_.c_str());
}

void FastCgiFrontend::work()
{
    FCGX_Request request;
    FCGX_InitRequest(&request, listenFd_, 0);
    for (;;) {
        if (FCGX_Accept_r(&request) < 0) {
            if (stopping_)
                break;
            continue;
        }
        bool readAll = false;
        try {
            readAll = Serve(service_, request);
        } catch (const std::exception& e) {
            // Only a broken connection gets here; the service itself answers page failures.
            PK_ERROR() << "FastCGI: request failed: " << e.what();
        }
        // With nothing left unread a plain close cannot reset the connection, so the worker
        // need not wait for the web server to close its end first (libfcgi's lingering close).
        if (readAll)
            FCGX_Detach(&request);
        FCGX_Finish_r(&request);
    }
    FCGX_Free(&request, 1);
}

}  // namespace panelkit::web

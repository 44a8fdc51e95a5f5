// panelkit web layer: the service of one pass of the process: settings, mounted applications, front end.
#include "web/Service.h"

#include "web/Context.h"
#include "web/FastCgiFrontend.h"
#include "web/FileServer.h"
#include "web/HttpFrontend.h"
#include "web/Log.h"
#include "web/Request.h"
#include "web/Response.h"

#include <csignal>

namespace panelkit::web {

namespace {

volatile std::sig_atomic_t g_terminate = 0;

const char kContentSecurityPolicy[] =
    "default-src 'self'; script-src 'self'; style-src 'self'; img-src 'self' data:; object-src 'none'; "
    "base-uri 'self'; form-action 'self'; frame-ancestors 'none'";

// A browser names the page a request comes from; it must be this device as the browser reached it.
bool SameOrigin(const Request& request)
{
    const std::string origin = request.header("Origin");
    if (origin.empty())
        return true;
    const auto scheme = origin.find("://");
    return scheme != std::string::npos && origin.substr(scheme + 3) == request.header("Host");
}

extern "C" void OnTerminate(int)
{
    g_terminate = 1;
}

void InstallSignalHandlers()
{
    struct sigaction action {};
    action.sa_handler = OnTerminate;
    sigemptyset(&action.sa_mask);
    ::sigaction(SIGTERM, &action, nullptr);
    ::sigaction(SIGINT, &action, nullptr);
    // A browser that goes away mid-reply must not end the process.
    ::signal(SIGPIPE, SIG_IGN);
}

}  // namespace

Service::Service(int argc, const char* const argv[]) : Service(Settings::FromCommandLine(argc, argv))
{
}

Service::Service(Settings settings)
    : settings_(std::move(settings)),
      workers_(std::max(1, settings_.get("service.worker_threads", 4))),
      limits_(Limits::FromSettings(settings_, "/tmp")),
      pool_(std::make_unique<ApplicationsPool>(*this, workers_))
{
    Log::Configure(settings_);
    api_ = settings_.get("service.api", "http");
    if (api_ == "http" && settings_.get("file_server.enable", false))
        files_ = std::make_unique<FileServer>(settings_.get("file_server.document_root", ""));
}

Service::~Service() = default;

void Service::run()
{
    std::unique_ptr<Frontend> frontend;
    if (api_ == "http")
        frontend = std::make_unique<HttpFrontend>(*this);
    else if (api_ == "fastcgi")
        frontend = std::make_unique<FastCgiFrontend>(*this);
    else
        throw SettingsError("service.api must be \"http\" or \"fastcgi\", not \"" + api_ + "\"");

    InstallSignalHandlers();
    frontend->start();
    std::unique_lock<std::mutex> lock(stopLock_);
    // Signals cannot notify a condition variable, so the wait looks at the flag now and then.
    while (!stopping_ && !g_terminate)
        stopSignal_.wait_for(lock, std::chrono::milliseconds(200));
    stopping_ = false;
    g_terminate = 0;
    lock.unlock();
    frontend->stop();
}

void Service::shutdown()
{
    std::lock_guard<std::mutex> lock(stopLock_);
    stopping_ = true;
    stopSignal_.notify_all();
}

void Service::handle(Request& request, Response& response)
{
    Context context(request, response);
    try {
        if (request.method() == "POST" && !SameOrigin(request)) {
            PK_WARNING() << "Refused a POST to " << request.path() << " from " << request.header("Origin");
            response.errorPage(403, "Requests from other sites are not accepted.");
        } else if (!pool_->serve(request.path())) {
            serveUnmounted(request, response);
        }
    } catch (const std::exception& e) {
        PK_ERROR() << "Exception while serving " << request.path() << ": " << e.what();
        response.errorPage(500, "The page failed; the error was logged.");
    }
    // Pages run only the scripts they load from the device itself.
    if (response.contentType().rfind("text/html", 0) == 0)
        response.setHeader("Content-Security-Policy", kContentSecurityPolicy);
}

void Service::serveUnmounted(Request& request, Response& response)
{
    if (api_ == "http" && request.path() == "/" && !rootRedirect_.empty()) {
        response.redirect(rootRedirect_);
        return;
    }
    if (api_ == "http")
        for (const auto& [prefix, handler] : fileHandlers_)
            if (request.path().compare(0, prefix.size(), prefix) == 0 &&
                handler(request.path().substr(prefix.size() - 1), response))
                return;
    if (files_ && files_->serve(request.path(), response))
        return;
    response.errorPage(404, "No page at " + request.path());
}

}  // namespace panelkit::web

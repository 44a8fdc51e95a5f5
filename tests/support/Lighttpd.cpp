// panelkit tests: a real lighttpd on a loopback port passing URL prefixes to a FastCGI socket.
#include "Lighttpd.h"

#include <Poco/Net/ServerSocket.h>

#include <csignal>
#include <sstream>
#include <stdexcept>

namespace panelkit::test {

Lighttpd::Lighttpd(const std::string& fastcgiSocket, const std::vector<std::string>& prefixes)
{
    // lighttpd cannot tell which port it got, so this process binds one the kernel chooses and hands
    // the listening socket over as systemd's socket activation does; lighttpd takes a passed socket
    // whose address its configuration names instead of binding its own.
    Poco::Net::ServerSocket listener(Poco::Net::SocketAddress("127.0.0.1", 0), 64);
    port_ = listener.address().port();
    std::ostringstream conf;
    conf << "server.document-root = \"" << work_.path() << "/www\"\n"
         << "server.systemd-socket-activation = \"enable\"\n"
         << "server.bind = \"127.0.0.1\"\n"
         << "server.port = " << port_ << "\n"
         << "server.errorlog = \"" << work_.path() << "/error.log\"\n"
         // Request bodies stream to panelkit as deploy/lighttpd.conf has them, through temporary
         // files of the work folder.
         << "server.stream-request-body = 2\n"
         << "server.upload-dirs = ( \"" << work_.path() << "\" )\n"
         << "server.modules = (\"mod_fastcgi\")\n"
         << "fastcgi.server = (\n";
    for (const auto& prefix : prefixes)
        conf << "  \"" << prefix << "\" => ((\"socket\" => \"" << fastcgiSocket
             << "\", \"check-local\" => \"disable\")),\n";
    conf << ")\n";
    work_.write("www/index.html", "static\n");
    work_.write("lighttpd.conf", conf.str());
    // The activation protocol names the receiving process: the shell's pid, which exec keeps.
    process_ = std::make_unique<Process>(
        std::vector<std::string>{"/bin/sh", "-c", "export LISTEN_PID=$$ LISTEN_FDS=1; exec \"$0\" \"$@\"",
                                 LIGHTTPD_PROGRAM, "-D", "-f", work_ / "lighttpd.conf"},
        work_ / "lighttpd.out", std::map<std::string, std::string>{}, listener.impl()->sockfd());
    // The socket accepts connections already; lighttpd serves them once it says it started.
    if (!WaitForText(work_ / "error.log", "server started", 10000) || !process_->running())
        throw std::runtime_error("lighttpd did not start: " + ReadFile(work_ / "lighttpd.out") +
                                 ReadFile(work_ / "error.log"));
}

Lighttpd::~Lighttpd()
{
    process_->stop(SIGTERM);
}

}  // namespace panelkit::test

// panelkit tests: a real lighttpd on a free loopback port passing URL prefixes to a FastCGI socket.
#include "Lighttpd.h"

#include <csignal>
#include <sstream>
#include <stdexcept>

namespace panelkit::test {

Lighttpd::Lighttpd(const std::string& fastcgiSocket, const std::vector<std::string>& prefixes) : port_(FreePort())
{
    std::ostringstream conf;
    conf << "server.document-root = \"" << work_.path() << "/www\"\n"
         << "server.bind = \"127.0.0.1\"\n"
         << "server.port = " << port_ << "\n"
         << "server.errorlog = \"" << work_.path() << "/error.log\"\n"
         << "server.modules = (\"mod_fastcgi\")\n"
         << "fastcgi.server = (\n";
    for (const auto& prefix : prefixes)
        conf << "  \"" << prefix << "\" => ((\"socket\" => \"" << fastcgiSocket
             << "\", \"check-local\" => \"disable\")),\n";
    conf << ")\n";
    work_.write("www/index.html", "static\n");
    work_.write("lighttpd.conf", conf.str());
    process_ = std::make_unique<Process>(
        std::vector<std::string>{LIGHTTPD_PROGRAM, "-D", "-f", work_ / "lighttpd.conf"}, work_ / "lighttpd.out");
    if (!WaitForPort(port_, 10000, process_.get()))
        throw std::runtime_error("lighttpd did not start: " + ReadFile(work_ / "lighttpd.out") +
                                 ReadFile(work_ / "error.log"));
}

Lighttpd::~Lighttpd()
{
    process_->stop(SIGTERM);
}

}  // namespace panelkit::test

// panelkit tests: a real lighttpd on a loopback port passing URL prefixes to a FastCGI socket.
#pragma once

#include "Process.h"
#include "TempDir.h"

#include <memory>
#include <string>
#include <vector>

namespace panelkit::test {

/// lighttpd serving the given prefixes through FastCGI on a Unix socket.
class Lighttpd {
public:
    /// Writes the configuration and starts lighttpd; throws when it does not come up.
    Lighttpd(const std::string& fastcgiSocket, const std::vector<std::string>& prefixes);
    ~Lighttpd();

    /// The HTTP port (the kernel's choice).
    int port() const { return port_; }

private:
    TempDir work_;
    int port_ = 0;
    std::unique_ptr<Process> process_;
};

}  // namespace panelkit::test

// panelkit web layer: the listening TCP socket of a front end, and the address it announces.
#pragma once

#include <Poco/Net/ServerSocket.h>

#include <string>

namespace panelkit::web {

/// Binds and listens on ip:port and logs "listening on SCHEME://ADDRESS" at info level. Port 0 lets
/// the kernel choose on the first pass of the process; the passes after a reload take the same port
/// again, so that clients and the announced address stay valid. Throws when it cannot listen.
Poco::Net::ServerSocket ListenTcp(const std::string& ip, int port, const std::string& scheme);

}  // namespace panelkit::web

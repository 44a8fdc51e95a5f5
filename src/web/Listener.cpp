// panelkit web layer: the listening TCP socket of a front end, and the address it announces.
#include "web/Listener.h"

#include "web/Log.h"

#include <Poco/Exception.h>

#include <atomic>

namespace panelkit::web {

namespace {

std::atomic<int> g_chosenPort{0};

Poco::Net::ServerSocket Bind(const std::string& ip, int port)
{
    Poco::Net::ServerSocket socket;
    socket.bind(Poco::Net::SocketAddress(ip, static_cast<Poco::UInt16>(port)), true);
    socket.listen(64);
    return socket;
}

}  // namespace

Poco::Net::ServerSocket ListenTcp(const std::string& ip, int port, const std::string& scheme)
{
    Poco::Net::ServerSocket socket;
    if (port == 0 && g_chosenPort != 0) {
        try {
            socket = Bind(ip, g_chosenPort);
        } catch (const Poco::Exception& e) {
            // Taken by someone else between two passes: a new port is better than no service.
            PK_WARNING() << "Port " << g_chosenPort << " is no longer free (" << e.displayText() << ")";
            socket = Bind(ip, 0);
        }
    } else {
        socket = Bind(ip, port);
    }
    if (port == 0)
        g_chosenPort = socket.address().port();
    PK_INFO() << "listening on " << scheme << "://" << socket.address().toString();
    return socket;
}

}  // namespace panelkit::web

// panelkit tests: the real panelkit binary started against a temporary device root.
#include "Server.h"

#include <Poco/File.h>
#include <Poco/Net/SocketAddress.h>
#include <Poco/Net/StreamSocket.h>

#include <chrono>
#include <csignal>
#include <fstream>
#include <thread>
#include <unistd.h>

namespace panelkit::test {

Server::Server(const std::string& api)
{
    Poco::File(work_ / "device/tmp").createDirectories();
    config_["service"]["api"] = api;
    config_["service"]["ip"] = "127.0.0.1";
    // The kernel chooses the port and the log tells it, so that parallel tests never race for one.
    config_["service"]["port"] = 0;
    config_["service"]["worker_threads"] = 4;
    if (api == "fastcgi")
        config_["service"]["socket"] = socket();
    config_["panelkit"]["root"]["sync"] = "config";
    config_["panelkit"]["root"]["async"] = "async";
    config_["panelkit"]["root"]["rpc"] = "rpc";
    config_["panelkit"]["device_root"] = work_ / "device";
    config_["logging"]["level"] = "debug";
    config_["logging"]["stderr"] = true;
}

Server::~Server()
{
    if (process_)
        process_->stop(SIGTERM);
}

bool Server::start(bool ready)
{
    Json::StreamWriterBuilder writer;
    std::ofstream(work_ / "panelkit.json") << Json::writeString(writer, config_);
    // The environment would win over the configuration; this test's process may have set it for another root.
    env_["PANELKIT_DEVICE_ROOT"] = config_["panelkit"]["device_root"].asString();
    process_ = std::make_unique<Process>(
        std::vector<std::string>{PANELKIT_BINARY, "-c", work_ / "panelkit.json"}, logPath(), env_);
    return !ready || waitReady();
}

bool Server::waitReady(int timeoutMs)
{
    if (config_["service"]["api"].asString() == "http") {
        const int announced = WaitForListeningPort(logPath(), timeoutMs, process_.get());
        if (announced == 0)
            return false;
        port_ = announced;
        return WaitForPort(port_, timeoutMs, process_.get());
    }
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    while (std::chrono::steady_clock::now() < deadline && process_->running()) {
        try {
            Poco::Net::StreamSocket probe;
            probe.connect(Poco::Net::SocketAddress(Poco::Net::SocketAddress::UNIX_LOCAL, socket()));
            return true;
        } catch (...) {
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
    }
    return false;
}

void Server::writeDeviceFile(const std::string& path, const std::string& content, bool executable) const
{
    work_.write("device" + path, content, executable);
}

bool Server::simulateDevice()
{
    Poco::File(work_ / "device").remove(true);
    return SimulateDevice(work_, work_ / "device");
}

std::string Server::storeGet(const std::string& key) const
{
    const auto got = RunTool(work_, {PANELKIT_PARDB, "--root", work_ / "device", "get", key});
    if (got.first != 0)
        return "<missing>";
    return got.second.substr(0, got.second.size() - 1);
}

bool Server::storeSet(const std::string& key, const std::string& value, const std::string& type) const
{
    std::vector<std::string> args{PANELKIT_PARDB, "--root", work_ / "device", "set", key, value};
    if (!type.empty())
        args.push_back(type);
    return RunTool(work_, args).first == 0;
}

bool Server::storeRefuse(const std::string& key) const
{
    return RunTool(work_, {PANELKIT_PARDB, "--root", work_ / "device", "refuse", key}).first == 0;
}

bool Server::rebootMarked() const
{
    return work_.exists("device/tmp/panelkit_reboot_flag");
}

std::string Server::log() const
{
    return ReadFile(logPath());
}

}  // namespace panelkit::test

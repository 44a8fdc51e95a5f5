// panelkit tests: the real panelkit binary started against a temporary device root.
#pragma once

#include "Process.h"
#include "TempDir.h"

#include <json/json.h>

#include <map>
#include <memory>
#include <string>

namespace panelkit::test {

/// A work folder holding the device root ("device/"), the configuration and the log,
/// and the panelkit process serving on a loopback port the kernel chose (read back from its log).
class Server {
public:
    /// Prepares the folder and a configuration for the api ("http" or "fastcgi").
    explicit Server(const std::string& api = "http");
    ~Server();

    /// The configuration written at start(); change it before.
    Json::Value& config() { return config_; }
    /// Environment variables for the process.
    std::map<std::string, std::string>& env() { return env_; }
    /// Starts panelkit; with waitReady, returns once it accepts connections (false if it did not).
    bool start(bool waitReady = true);
    /// Waits until the log announces the HTTP port (or the FastCGI socket exists) and it accepts;
    /// false after timeoutMs or if the process ended.
    bool waitReady(int timeoutMs = 20000);
    /// The process (valid after start()).
    Process& process() { return *process_; }
    /// The port of the HTTP front end, as its log announced it (0 before waitReady()).
    int port() const { return port_; }
    /// The FastCGI socket path.
    std::string socket() const { return work_ / "panelkit.sock"; }
    /// The work folder.
    const TempDir& work() const { return work_; }
    /// A device path inside the device root ("/tmp/x").
    std::string devicePath(const std::string& path) const { return work_ / ("device" + path); }
    /// Writes a file in the device root.
    void writeDeviceFile(const std::string& path, const std::string& content, bool executable = false) const;
    /// Makes the device root a simulated device (folders, seeded store, stand-ins); call before start().
    bool simulateDevice();
    /// A value of the device's parameter store, read with the pardb tool; "<missing>" when it has none.
    std::string storeGet(const std::string& key) const;
    /// Writes a store value with the pardb tool ("--int" as type for an integer).
    bool storeSet(const std::string& key, const std::string& value, const std::string& type = "") const;
    /// Makes the device's store refuse every later write and delete of the key, as a failing store
    /// would (`pardb refuse KEY`); false when the tool failed.
    bool storeRefuse(const std::string& key) const;
    /// Whether a save asked for a reboot: the flag file exists.
    bool rebootMarked() const;
    /// Everything the process logged so far.
    std::string log() const;
    /// The log file's path.
    std::string logPath() const { return work_ / "panelkit.log"; }

private:
    TempDir work_;
    Json::Value config_;
    std::map<std::string, std::string> env_;
    int port_ = 0;
    std::unique_ptr<Process> process_;
};

}  // namespace panelkit::test

// panelkit tests: child processes (panelkit itself, lighttpd) with their output captured in a file.
#pragma once

#include "TempDir.h"

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace panelkit::test {

/// A program started with an argument vector, its standard output and error sent to a log file.
class Process {
public:
    /// Starts the program; extraEnv is added to this process's environment. A descriptor given as
    /// passFd is the program's descriptor 3 (a listening socket handed over as socket activation does).
    Process(const std::vector<std::string>& argv, const std::string& logFile,
            const std::map<std::string, std::string>& extraEnv = {}, int passFd = -1);
    /// Kills the process if it still runs.
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    /// The process id.
    int pid() const { return pid_; }
    /// True while the process has not exited.
    bool running();
    /// Sends a signal and waits up to timeoutMs for the exit; the exit status, or -1 on time-out, 128+n when killed.
    int stop(int signal, int timeoutMs = 15000);
    /// Waits up to timeoutMs for the process to end by itself; the exit status or -1.
    int wait(int timeoutMs);

private:
    int pid_ = -1;
    int status_ = -1;
    bool exited_ = false;
};

/// Waits until a TCP connection to the loopback port succeeds; false after timeoutMs.
bool WaitForPort(int port, int timeoutMs, Process* process = nullptr);
/// Runs a tool of the build with its output in the work folder; the exit status and the output.
std::pair<int, std::string> RunTool(const TempDir& work, const std::vector<std::string>& args);
/// Makes the folder a simulated device root with sim/init-device; true when it succeeded.
bool SimulateDevice(const TempDir& work, const std::string& device);
/// Reads a whole file, "" when missing.
std::string ReadFile(const std::string& path);
/// Waits until the file contains the text; false after timeoutMs.
bool WaitForText(const std::string& path, const std::string& text, int timeoutMs);
/// Waits until panelkit's log announces its HTTP address ("listening on http://127.0.0.1:PORT") and
/// gives the port of the last announcement; 0 after timeoutMs or when the process ended first.
int WaitForListeningPort(const std::string& logFile, int timeoutMs, Process* process = nullptr);

}  // namespace panelkit::test

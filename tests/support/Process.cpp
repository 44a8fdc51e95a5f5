// panelkit tests: child processes (panelkit itself, lighttpd) with their output captured in a file.
#include "Process.h"

#include <Poco/Net/StreamSocket.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <spawn.h>
#include <sstream>
#include <stdexcept>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

extern char** environ;

namespace panelkit::test {

Process::Process(const std::vector<std::string>& argv, const std::string& logFile,
                 const std::map<std::string, std::string>& extraEnv, int passFd)
{
    std::vector<std::string> env;
    for (char** e = environ; *e; ++e) {
        const std::string entry = *e;
        const std::string name = entry.substr(0, entry.find('='));
        if (!extraEnv.count(name))
            env.push_back(entry);
    }
    for (const auto& [name, value] : extraEnv)
        env.push_back(name + "=" + value);

    std::vector<char*> args;
    for (const auto& a : argv)
        args.push_back(const_cast<char*>(a.c_str()));
    args.push_back(nullptr);
    std::vector<char*> envp;
    for (auto& e : env)
        envp.push_back(e.data());
    envp.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, logFile.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0644);
    posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
    // Through a spare copy above 3, so that the duplicate made in the child is always a fresh one
    // (a dup2 onto itself would keep close-on-exec).
    const int spare = passFd < 0 ? -1 : ::fcntl(passFd, F_DUPFD_CLOEXEC, 10);
    if (passFd >= 0 && spare < 0)
        throw std::runtime_error("cannot pass a descriptor to " + argv[0] + ": " + std::strerror(errno));
    if (spare >= 0)
        posix_spawn_file_actions_adddup2(&actions, spare, 3);
    pid_t pid = -1;
    const int rc = ::posix_spawn(&pid, args[0], &actions, nullptr, args.data(), envp.data());
    posix_spawn_file_actions_destroy(&actions);
    if (spare >= 0)
        ::close(spare);
    if (rc != 0)
        throw std::runtime_error("cannot start " + argv[0] + ": " + std::strerror(rc));
    pid_ = pid;
}

Process::~Process()
{
    if (running())
        stop(SIGKILL, 5000);
}

bool Process::running()
{
    if (exited_)
        return false;
    int status = 0;
    if (::waitpid(pid_, &status, WNOHANG) == pid_) {
        exited_ = true;
        status_ = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }
    return !exited_;
}

int Process::wait(int timeoutMs)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    while (running()) {
        if (std::chrono::steady_clock::now() > deadline)
            return -1;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return status_;
}

int Process::stop(int signal, int timeoutMs)
{
    if (running())
        ::kill(pid_, signal);
    return wait(timeoutMs);
}

bool WaitForPort(int port, int timeoutMs, Process* process)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    while (std::chrono::steady_clock::now() < deadline) {
        if (process && !process->running())
            return false;
        try {
            Poco::Net::StreamSocket socket;
            socket.connect(Poco::Net::SocketAddress("127.0.0.1", static_cast<Poco::UInt16>(port)),
                           Poco::Timespan(0, 200000));
            return true;
        } catch (...) {
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
    }
    return false;
}

std::string ReadFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

bool WaitForText(const std::string& path, const std::string& text, int timeoutMs)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    while (ReadFile(path).find(text) == std::string::npos) {
        if (std::chrono::steady_clock::now() > deadline)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    return true;
}

int WaitForListeningPort(const std::string& logFile, int timeoutMs, Process* process)
{
    static const std::string kAnnounced = "listening on http://";
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    while (std::chrono::steady_clock::now() < deadline) {
        // Read before asking whether the process still runs, so that a line written just before its end counts.
        const std::string log = ReadFile(logFile);
        const auto at = log.rfind(kAnnounced);
        // The address ends the line's text: "... listening on http://127.0.0.1:40123 (Listener.cpp:40)".
        const auto end = at == std::string::npos ? std::string::npos : log.find_first_of(" \n", at + kAnnounced.size());
        if (end != std::string::npos) {
            const auto colon = log.rfind(':', end);
            return std::atoi(log.substr(colon + 1, end - colon - 1).c_str());
        }
        if (process && !process->running())
            return 0;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return 0;
}

std::pair<int, std::string> RunTool(const TempDir& work, const std::vector<std::string>& args)
{
    const std::string out = work / "tool.out";
    ::unlink(out.c_str());
    Process process(args, out);
    const int status = process.wait(60000);
    return {status, ReadFile(out)};
}

bool SimulateDevice(const TempDir& work, const std::string& device)
{
    const std::string binary = PANELKIT_BINARY;
    const std::string build = binary.substr(0, binary.rfind('/'));
    const auto made =
        RunTool(work, {"/usr/bin/env", "PANELKIT_BUILD_DIR=" + build, PANELKIT_SOURCE_DIR "/sim/init-device", device});
    EXPECT_EQ(0, made.first) << made.second;
    return made.first == 0;
}

}  // namespace panelkit::test

// panelkit util: device programs run with arguments or fixed shell lines, and the detached reboot and upgrade.
#include "util/Commands.h"

#include "util/DevicePath.h"
#include "util/Files.h"
#include "web/Log.h"

#include <qor_util/system.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <limits>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace panelkit::util {

namespace {

const char kAppInitScript[] = "/etc/init.d/rcS";

// The strings must outlive the array.
std::vector<char*> ArgumentArray(const std::vector<std::string>& argv)
{
    std::vector<char*> array;
    array.reserve(argv.size() + 1);
    for (const auto& arg : argv)
        array.push_back(const_cast<char*>(arg.c_str()));
    array.push_back(nullptr);
    return array;
}

// Standard output goes to `output` when it is not negative; false when the program cannot be started.
bool Spawn(const char* program, const std::vector<std::string>& argv, int output, pid_t& pid)
{
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    if (output >= 0)
        posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    // The service ignores SIGPIPE; a program whose reader went away ends as it would under a shell.
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t defaults;
    sigemptyset(&defaults);
    sigaddset(&defaults, SIGPIPE);
    posix_spawnattr_setsigdefault(&attributes, &defaults);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
    std::vector<char*> args = ArgumentArray(argv);
    const int rc = ::posix_spawnp(&pid, program, &actions, &attributes, args.data(), environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    return rc == 0;
}

int Reap(pid_t pid)
{
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0)
        if (errno != EINTR)
            return -1;
    return status;
}

// Reading stops one byte past the limit: enough to know the output was cut.
std::string ReadBounded(int fd, std::size_t maxBytes)
{
    const std::size_t limit = maxBytes == std::numeric_limits<std::size_t>::max() ? maxBytes : maxBytes + 1;
    std::string text;
    char chunk[4096];
    while (text.size() < limit) {
        const ssize_t got = ::read(fd, chunk, std::min(sizeof chunk, limit - text.size()));
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            break;
        text.append(chunk, static_cast<std::size_t>(got));
    }
    return Bounded(std::move(text), maxBytes);
}

std::string Capture(const char* program, const std::vector<std::string>& argv, std::size_t maxBytes)
{
    // Close-on-exec: a program another request starts at the same moment must not hold this pipe open.
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
        return "";
    pid_t pid = -1;
    const bool started = Spawn(program, argv, ends[1], pid);
    ::close(ends[1]);
    std::string output = started ? ReadBounded(ends[0], maxBytes) : std::string();
    // Closed before the wait, so that a program still writing ends instead of blocking on a full pipe.
    ::close(ends[0]);
    if (started)
        Reap(pid);
    return output;
}

// In a detached child: every inherited descriptor but the standard streams is closed.
// limitFailure is logged after `who` when the limit cannot be read, with the cause when withCause.
bool CloseInheritedDescriptors(const char* who, const char* limitFailure, bool withCause)
{
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) {
        PK_ERROR() << who << limitFailure << (withCause ? std::strerror(errno) : "");
        return false;
    }
    if (limit.rlim_cur == 0) {
        PK_ERROR() << who << ": Max number of open file descriptors is 0!!";
        return false;
    }
    for (rlim_t fd = 0; fd < limit.rlim_cur && fd < 65536; ++fd)
        if (fd != STDIN_FILENO && fd != STDOUT_FILENO && fd != STDERR_FILENO)
            ::close(static_cast<int>(fd));
    return true;
}

bool QuietStandardStreams()
{
    return std::freopen("/dev/null", "r", stdin) && std::freopen("/dev/null", "w", stdout) &&
           std::freopen("/dev/null", "w", stderr);
}

}  // namespace

std::string ShellQuote(const std::string& text)
{
    std::string quoted = "'";
    for (char c : text)
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

std::string ShellDevicePath(const std::string& path)
{
    return ShellQuote(DevicePath(path));
}

std::string Bounded(std::string text, std::size_t maxBytes)
{
    if (text.size() <= maxBytes)
        return text;
    text.resize(maxBytes);
    if (text.size() >= 4)
        text.replace(text.size() - 3, 3, "...");
    return text;
}

std::string ShellCommand(const std::string& cmd, std::size_t maxBytes)
{
    return Capture("/bin/sh", {"sh", "-c", cmd}, maxBytes);
}

int ShellCommand(const std::string& cmd, std::string& out)
{
    return qor_util::system::exec(cmd, out);
}

std::string Run(const std::vector<std::string>& argv, std::size_t maxBytes)
{
    return argv.empty() ? std::string() : Capture(argv[0].c_str(), argv, maxBytes);
}

int RunStatus(const std::vector<std::string>& argv)
{
    const int notFound = 127 << 8;  // what the shell answers for a program it cannot find
    pid_t pid = -1;
    if (argv.empty() || !Spawn(argv[0].c_str(), argv, -1, pid))
        return notFound;
    return Reap(pid);
}

void ForkReboot()
{
    ::signal(SIGCHLD, SIG_IGN);
    const pid_t pid = ::fork();
    if (pid > 0) {
        PK_INFO() << "Forked a reboot";
        return;
    }
    if (pid < 0) {
        PK_ERROR() << "ForkReboot failed";
        return;
    }
    ::signal(SIGCHLD, SIG_DFL);
    ::setsid();
    if (!CloseInheritedDescriptors("ForkReboot", ": getrlimit ", true) || !QuietStandardStreams())
        std::_Exit(1);
    const std::string reboot = DevicePath("/sbin/reboot");
    std::_Exit(::execl(reboot.c_str(), "reboot", "-d", "5", static_cast<char*>(nullptr)));
}

int ForkFirmwareUpgrade(const std::string& file, const std::string& appsDir)
{
    ::signal(SIGCHLD, SIG_IGN);
    const pid_t pid = ::fork();
    if (pid != 0) {
        if (pid < 0)
            PK_ERROR() << "FWupgrade: failed to fork, " << std::strerror(errno);
        return pid;
    }
    ::signal(SIGCHLD, SIG_DFL);
    if (::setsid() < 0) {
        PK_ERROR() << "FWupgrade: failed to create a session";
        std::_Exit(1);
    }
    if (::chdir("/") != 0) {
        PK_ERROR() << "FWupgrade: failed to change dir";
        std::_Exit(1);
    }
    ::umask(0);
    if (!CloseInheritedDescriptors("FWupgrade", ": failed to get rlimit", false) || !QuietStandardStreams())
        std::_Exit(1);
    for (const auto& app : FindFiles(appsDir, FindFilesType::Directory, ".*")) {
        const std::string script = appsDir + "/" + app + kAppInitScript;
        if (!FileExists(script))
            continue;
        const int result = std::system((ShellQuote(script) + " stop").c_str());
        PK_INFO() << "\"" << script << " stop\"" << " returned: " << result;
    }
    const std::string fwtool = DevicePath("/usr/bin/fwtool");
    ::execl(fwtool.c_str(), "fwtool", "--upgrade", file.c_str(), "--delete", "--create-ubi-volume",
            "--unmount-ubi-volume", static_cast<char*>(nullptr));
    std::_Exit(0);
}

}  // namespace panelkit::util

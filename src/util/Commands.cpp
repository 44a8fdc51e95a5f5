// panelkit util: device programs run with arguments or fixed shell lines, and the detached reboot and upgrade.
#include "util/Commands.h"

#include "util/DevicePath.h"
#include "util/Files.h"
#include "web/Log.h"

#include <qor_util/system.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <limits>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace panelkit::util {

namespace {

const char kAppInitScript[] = "/etc/init.d/rcS";

// How a detached child reports back: the grandchild's pid, or the fork's errno.
struct Started {
    pid_t pid;
    int error;
};

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

// Standard output goes to `output` (and standard error too when `merged`) and standard input comes from `input`
// when they are not negative; false when the program cannot be started.
bool Spawn(const char* program, const std::vector<std::string>& argv, int output, pid_t& pid, int input = -1,
           bool merged = false)
{
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    if (output >= 0)
        posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    if (output >= 0 && merged)
        posix_spawn_file_actions_adddup2(&actions, output, STDERR_FILENO);
    if (input >= 0)
        posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
    // The service ignores SIGPIPE; a program whose reader went away ends as it would under a shell.
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t defaults;
    sigemptyset(&defaults);
    sigaddset(&defaults, SIGPIPE);
    posix_spawnattr_setsigdefault(&attributes, &defaults);
    // The worker threads block the stop signals; a program started from one must still stop when told to.
    sigset_t none;
    sigemptyset(&none);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
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

std::string Capture(const char* program, const std::vector<std::string>& argv, std::size_t maxBytes,
                    bool merged = false)
{
    // Close-on-exec: a program another request starts at the same moment must not hold this pipe open.
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
        return "";
    pid_t pid = -1;
    const bool started = Spawn(program, argv, ends[1], pid, -1, merged);
    ::close(ends[1]);
    std::string output = started ? ReadBounded(ends[0], maxBytes) : std::string();
    // Closed before the wait, so that a program still writing ends instead of blocking on a full pipe.
    ::close(ends[0]);
    if (started)
        Reap(pid);
    return output;
}

// The grandchild. Its parent may have had other threads, whose locks this copy would never see released:
// only async-signal-safe calls until the exec.
[[noreturn]] void BecomeDetached(const char* path, char* const argv[], bool asDaemon)
{
    // Its own session, so that the end of the service does not take it along. The firmware tool runs as the
    // device's daemons do, from / (it unmounts volumes, so it must not hold the service's folder) with a clear umask.
    if (::setsid() < 0 && asDaemon)
        ::_exit(1);
    if (asDaemon) {
        if (::chdir("/") != 0)
            ::_exit(1);
        ::umask(0);
    }
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur == 0)
        ::_exit(1);
    for (rlim_t fd = STDERR_FILENO + 1; fd < limit.rlim_cur && fd < 65536; ++fd)
        ::close(static_cast<int>(fd));
    const int null = ::open("/dev/null", O_RDWR);
    if (null < 0)
        ::_exit(1);
    for (int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (::dup2(null, fd) < 0)
            ::_exit(1);
    if (null > STDERR_FILENO)
        ::close(null);
    // The service ignores SIGPIPE; the program gets the default, as when the device starts it.
    struct sigaction action {};
    action.sa_handler = SIG_DFL;
    sigemptyset(&action.sa_mask);
    ::sigaction(SIGPIPE, &action, nullptr);
    // Nor does it keep the signals the calling worker thread blocks: a service the reboot starts again
    // would never see its SIGTERM.
    sigset_t none;
    sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    ::execv(path, argv);
    ::_exit(127);
}

// A double fork: the middle child starts the grandchild and ends at once, and is reaped here. The grandchild
// then belongs to init, so it never lingers as a zombie of the service and SIGCHLD keeps its disposition.
// Its pid comes back through a close-on-exec pipe; -1 with errno set when it could not be started.
pid_t SpawnDetached(const std::string& path, const std::vector<std::string>& argv, bool asDaemon)
{
    std::vector<char*> args = ArgumentArray(argv);
    int channel[2];
    if (::pipe2(channel, O_CLOEXEC) != 0)
        return -1;
    const pid_t child = ::fork();
    if (child < 0) {
        const int error = errno;
        ::close(channel[0]);
        ::close(channel[1]);
        errno = error;
        return -1;
    }
    if (child == 0) {
        const pid_t grandchild = ::fork();
        if (grandchild == 0)
            BecomeDetached(path.c_str(), args.data(), asDaemon);
        const Started started{grandchild, grandchild < 0 ? errno : 0};
        const bool told = ::write(channel[1], &started, sizeof started) == static_cast<ssize_t>(sizeof started);
        ::_exit(told && grandchild > 0 ? 0 : 1);
    }
    ::close(channel[1]);
    Started started{-1, ECHILD};
    ssize_t got = 0;
    while ((got = ::read(channel[0], &started, sizeof started)) < 0 && errno == EINTR) {
    }
    ::close(channel[0]);
    Reap(child);
    if (got != static_cast<ssize_t>(sizeof started))
        started = {-1, ECHILD};
    if (started.pid < 0)
        errno = started.error;
    return started.pid;
}

}  // namespace

std::string ShellQuote(const std::string& text)
{
    std::string quoted = "'";
    for (char c : text)
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
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

std::string RunMerged(const std::vector<std::string>& argv, std::size_t maxBytes)
{
    return argv.empty() ? std::string() : Capture(argv[0].c_str(), argv, maxBytes, true);
}

int RunStatus(const std::vector<std::string>& argv)
{
    const int notFound = 127 << 8;  // what the shell answers for a program it cannot find
    pid_t pid = -1;
    if (argv.empty() || !Spawn(argv[0].c_str(), argv, -1, pid))
        return notFound;
    return Reap(pid);
}

int RunWithInput(const std::vector<std::string>& argv, const std::string& input)
{
    const int notFound = 127 << 8;
    if (argv.empty())
        return notFound;
    // A socket rather than a pipe: a program that ends without reading must not raise SIGPIPE here.
    int ends[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
        return notFound;
    const int discard = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    pid_t pid = -1;
    const bool started = discard >= 0 && Spawn(argv[0].c_str(), argv, discard, pid, ends[1]);
    ::close(ends[1]);
    if (discard >= 0)
        ::close(discard);
    if (!started) {
        ::close(ends[0]);
        return notFound;
    }
    for (std::size_t sent = 0; sent < input.size();) {
        const ssize_t wrote = ::send(ends[0], input.data() + sent, input.size() - sent, MSG_NOSIGNAL);
        if (wrote < 0 && errno == EINTR)
            continue;
        if (wrote <= 0)
            break;
        sent += static_cast<std::size_t>(wrote);
    }
    // The end of the input tells the program there is no more.
    ::close(ends[0]);
    return Reap(pid);
}

void ForkReboot()
{
    if (SpawnDetached(DevicePath("/sbin/reboot"), {"reboot", "-d", "5"}, false) < 0) {
        PK_ERROR() << "ForkReboot failed";
        return;
    }
    PK_INFO() << "Forked a reboot";
}

int ForkFirmwareUpgrade(const std::string& file, const std::string& appsDir)
{
    // Stopped here rather than in the detached child: they are stopped before the tool starts, and logged.
    for (const auto& app : FindFiles(appsDir, FindFilesType::Directory, ".*")) {
        const std::string script = appsDir + "/" + app + kAppInitScript;
        if (!FileExists(script))
            continue;
        const int result = RunStatus({script, "stop"});
        PK_INFO() << "\"" << script << " stop\"" << " returned: " << result;
    }
    const pid_t pid = SpawnDetached(
        DevicePath("/usr/bin/fwtool"),
        {"fwtool", "--upgrade", file, "--delete", "--create-ubi-volume", "--unmount-ubi-volume"}, true);
    if (pid < 0) {
        const int error = errno;
        PK_ERROR() << "FWupgrade: failed to fork, " << std::strerror(error);
    }
    return pid;
}

}  // namespace panelkit::util

// panelkit util: fixed shell command lines with captured output, and the detached reboot and upgrade children.
#include "util/Commands.h"

#include "util/DevicePath.h"
#include "util/Files.h"
#include "web/Log.h"

#include <qor_util/system.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace panelkit::util {

namespace {

const char kAppInitScript[] = "/etc/init.d/rcS";

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

std::string ShellCommand(const std::string& cmd, std::size_t maxBytes)
{
    std::string result;
    result.reserve(maxBytes);
    FILE* pipe = ::popen(cmd.c_str(), "r");
    if (!pipe)
        return result;
    char chunk[512];
    std::size_t total = 0;
    for (;;) {
        std::memset(chunk, 0, sizeof chunk);
        const std::size_t got = std::fread(chunk, 1, sizeof chunk, pipe);
        if (got == 0)
            break;
        total += got;
        if (total > maxBytes) {
            result.append(chunk, maxBytes - result.size());
            if (result.size() >= 4)
                result.replace(result.size() - 3, 3, "...");
            break;
        }
        result.append(chunk, got);
    }
    ::pclose(pipe);
    return result;
}

int ShellCommand(const std::string& cmd, std::string& out)
{
    return qor_util::system::exec(cmd, out);
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

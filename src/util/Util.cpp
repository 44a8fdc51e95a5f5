// panelkit util: flag files shared with the main loop, the firmware-upgrade process, environment and file helpers.
#include "util/Util.h"

#include "util/DevicePath.h"
#include "web/Log.h"
#include "web/Settings.h"

#include <qor_util/GlobalLock.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <regex.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace panelkit::util {

namespace {

const char kRebootFlag[] = "/tmp/panelkit_reboot_flag";
const char kReloadFlag[] = "/tmp/panelkit_freload_flag";
const char kFirmwareFlag[] = "/tmp/panelkit_fwsugd_flag";
const char kFwtoolStatus[] = "/tmp/fwtool_status.txt";
const char kFwtoolDone[] = "'done'";
const char kAppInitScript[] = "/etc/init.d/rcS";
const char kFwtoolLock[] = "/tmp/fwtool_6v1Znb.lock";

void Run(const std::string& command)
{
    const int status = std::system(command.c_str());
    (void)status;  // the flag helpers do not report failures; the next look at the file tells
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

void MarkRebootRequired()
{
    Run("touch " + ShellDevicePath(kRebootFlag));
}

bool IsRebootRequired()
{
    if (FileExists(DevicePath(kRebootFlag)))
        return true;
    std::string status;
    if (!ReadFileHead(DevicePath(kFwtoolStatus), 4096, status))
        return false;
    return status.substr(0, status.find('\n')).find(kFwtoolDone) != std::string::npos;
}

void MarkForceReload(bool on)
{
    Run((on ? "touch " : "rm ") + ShellDevicePath(kReloadFlag));
}

bool IsForceReloadFlagged()
{
    return FileExists(DevicePath(kReloadFlag));
}

void MarkFirmwareUpgrade(bool on)
{
    Run((on ? "touch " : "rm -f ") + ShellDevicePath(kFirmwareFlag));
}

bool IsFirmwareUpgradeFlagged()
{
    return FileExists(DevicePath(kFirmwareFlag));
}

std::string& FirmwareUpgradeFile()
{
    static std::string file;
    return file;
}

int& FirmwareUpgradePid()
{
    static int pid = -1;
    return pid;
}

bool IsFirmareUpgradeInProgress()
{
    const std::string lockPath = DevicePath(kFwtoolLock);
    if (::access(lockPath.c_str(), F_OK) != 0)
        return false;
    qor_util::GlobalLock lock(lockPath);
    lock.reset(::open(lockPath.c_str(), O_RDWR));
    if (lock.fd() < 0)
        return true;
    struct flock probe {};
    probe.l_type = F_WRLCK;
    probe.l_whence = SEEK_SET;
    probe.l_start = 0;
    probe.l_len = 0;
    probe.l_pid = ::getpid();
    if (::fcntl(lock.fd(), F_GETLK, &probe) != 0)
        return true;
    return probe.l_type != F_UNLCK;
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

std::vector<std::string> FindFiles(const std::string& dir, FindFilesType type, const std::string& pattern)
{
    std::vector<std::string> names;
    regex_t expression;
    if (::regcomp(&expression, pattern.c_str(), REG_EXTENDED | REG_NOSUB) != 0) {
        PK_ERROR() << "FindFiles: Bad regex pattern: " << pattern;
        return names;
    }
    DIR* folder = ::opendir(dir.c_str());
    if (!folder) {
        ::regfree(&expression);
        return names;
    }
    while (const dirent* entry = ::readdir(folder)) {
        const std::string name = entry->d_name;
        if (::regexec(&expression, name.c_str(), 0, nullptr, 0) != 0)
            continue;
        const bool keep = type == FindFilesType::Any || (type == FindFilesType::Regular && entry->d_type == DT_REG) ||
                          (type == FindFilesType::Directory && entry->d_type == DT_DIR && name != "." && name != "..");
        if (keep)
            names.push_back(name);
    }
    ::closedir(folder);
    ::regfree(&expression);
    return names;
}

std::string GetEnv(const std::string& name)
{
    const char* value = std::getenv(name.c_str());
    return value ? std::string(value) : std::string();
}

std::string EnvOrSettings(const std::string& envName, const std::string& path, const web::Settings& settings)
{
    const std::string env = GetEnv(envName);
    if (!env.empty())
        return env;
    const Json::Value* value = settings.find(path);
    return value && value->isString() ? value->asString() : std::string();
}

}  // namespace panelkit::util

// panelkit util: the flag files shared with the main loop, and the firmware tool's lock and status files.
#include "util/FlagFiles.h"

#include "util/DevicePath.h"
#include "util/Files.h"
#include "web/Log.h"

#include <qor_util/GlobalLock.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <fcntl.h>
#include <thread>
#include <unistd.h>

namespace panelkit::util {

namespace {

const char kRebootFlag[] = "/tmp/panelkit_reboot_flag";
const char kReloadFlag[] = "/tmp/panelkit_freload_flag";
const char kFirmwareFlag[] = "/tmp/panelkit_fwsugd_flag";
const char kFwtoolStatus[] = "/tmp/fwtool_status.txt";
const char kFwtoolDone[] = "'done'";
const char kFwtoolLock[] = "/tmp/fwtool_6v1Znb.lock";

// The flags are files so that the main loop and every worker see them; failures are told as touch and rm
// tell them, and the next look at the file decides.
void CreateFlag(const std::string& path)
{
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NOCTTY, 0666);
    if (fd < 0) {
        const int error = errno;
        PK_WARNING() << "touch: cannot touch '" << path << "': " << std::strerror(error);
        return;
    }
    ::close(fd);
}

// quietWhenAbsent clears as rm -f does: a flag that is not there is already cleared.
void RemoveFlag(const std::string& path, bool quietWhenAbsent)
{
    if (::unlink(path.c_str()) == 0)
        return;
    const int error = errno;
    if (error == ENOENT && quietWhenAbsent)
        return;
    PK_WARNING() << "rm: cannot remove '" << path << "': " << std::strerror(error);
}

}  // namespace

void MarkRebootRequired()
{
    CreateFlag(DevicePath(kRebootFlag));
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
    if (on)
        CreateFlag(DevicePath(kReloadFlag));
    else
        RemoveFlag(DevicePath(kReloadFlag), false);
}

bool IsForceReloadFlagged()
{
    return FileExists(DevicePath(kReloadFlag));
}

void MarkFirmwareUpgrade(bool on)
{
    if (on)
        CreateFlag(DevicePath(kFirmwareFlag));
    else
        RemoveFlag(DevicePath(kFirmwareFlag), true);
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

std::string ReadFirmwareStatusLine(bool& opened)
{
    const int fd = ::open(DevicePath(kFwtoolStatus).c_str(), O_RDONLY | O_CLOEXEC);
    opened = fd >= 0;
    if (fd < 0)
        return "";
    // The tool rewrites the file under a write lock, so a shared lock gives a whole line. A tool that keeps
    // its lock must not keep every worker with it: after a second the line is read as it stands.
    struct flock lock {};
    lock.l_type = F_RDLCK;
    lock.l_whence = SEEK_SET;
    const auto giveUp = std::chrono::steady_clock::now() + std::chrono::seconds(1);
    while (::fcntl(fd, F_SETLK, &lock) != 0 && (errno == EACCES || errno == EAGAIN || errno == EINTR) &&
           std::chrono::steady_clock::now() < giveUp)
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    char buffer[99];
    std::size_t got = 0;
    while (got < sizeof buffer) {
        const ssize_t n = ::read(fd, buffer + got, sizeof buffer - got);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            break;
        got += static_cast<std::size_t>(n);
    }
    ::close(fd);  // lets go of the lock too
    const std::string text(buffer, got);
    return text.substr(0, text.find('\n'));
}

}  // namespace panelkit::util

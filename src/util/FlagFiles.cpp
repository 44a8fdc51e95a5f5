// panelkit util: the flag files shared with the main loop, and the firmware tool's lock and status files.
#include "util/FlagFiles.h"

#include "util/DevicePath.h"
#include "util/Files.h"
#include "web/Log.h"

#include <qor_util/GlobalLock.h>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
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

}  // namespace panelkit::util

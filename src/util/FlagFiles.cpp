// panelkit util: the flag files shared with the main loop, and the firmware tool's lock and status files.
#include "util/FlagFiles.h"

#include "util/Commands.h"
#include "util/DevicePath.h"
#include "util/Files.h"

#include <qor_util/GlobalLock.h>

#include <cstdlib>
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

void Run(const std::string& command)
{
    const int status = std::system(command.c_str());
    (void)status;  // the flag helpers do not report failures; the next look at the file tells
}

}  // namespace

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

}  // namespace panelkit::util

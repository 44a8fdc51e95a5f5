// panelkit util: flag files shared with the main loop, the firmware-upgrade process, environment and file helpers.
#pragma once

#include <string>
#include <vector>

namespace panelkit::web {
class Settings;
}

namespace panelkit::util {

/// What FindFiles keeps.
enum class FindFilesType { Regular = 0, Directory = 1, Any = 2 };

/// Marks that the device must reboot for saved settings to take effect.
void MarkRebootRequired();
/// True when a reboot is required: the reboot flag, or a finished firmware tool.
bool IsRebootRequired();
/// Sets or clears the flag that makes the main loop rebuild the service.
void MarkForceReload(bool on);
/// True when the forced-reload flag is set.
bool IsForceReloadFlagged();
/// Sets or clears the flag that makes the main loop start the firmware upgrade.
void MarkFirmwareUpgrade(bool on);
/// True when a firmware upgrade has been requested.
bool IsFirmwareUpgradeFlagged();
/// The image to upgrade with, process-wide.
std::string& FirmwareUpgradeFile();
/// The pid of the upgrade child, process-wide; -1 before any.
int& FirmwareUpgradePid();
/// True while the firmware tool holds its lock file (or the lock cannot be checked).
bool IsFirmareUpgradeInProgress();
/// Forks a detached child that stops the applications under appsDir and becomes the
/// firmware tool; the child's pid, or a negative value when the fork failed.
int ForkFirmwareUpgrade(const std::string& file, const std::string& appsDir);
/// The names in dir matching the POSIX extended expression, in directory order.
std::vector<std::string> FindFiles(const std::string& dir, FindFilesType type, const std::string& pattern);
/// The environment variable, "" when not set.
std::string GetEnv(const std::string& name);
/// The environment variable when set and not empty, else the string at the settings path, else "".
std::string EnvOrSettings(const std::string& envName, const std::string& path, const web::Settings& settings);

}  // namespace panelkit::util

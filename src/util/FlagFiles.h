// panelkit util: the flag files shared with the main loop, and the firmware tool's lock and status files.
#pragma once

#include <string>

namespace panelkit::util {

/// Marks that the device must reboot for saved settings to take effect.
void MarkRebootRequired();
/// True when a reboot is required: the reboot flag, or a finished firmware tool.
bool IsRebootRequired();
/// Sets or clears the flag that makes the main loop rebuild the service; clearing an absent flag logs a warning.
void MarkForceReload(bool on);
/// True when the forced-reload flag is set.
bool IsForceReloadFlagged();
/// Sets or clears the flag that makes the main loop start the firmware upgrade; clearing an absent flag is quiet.
void MarkFirmwareUpgrade(bool on);
/// True when a firmware upgrade has been requested.
bool IsFirmwareUpgradeFlagged();
/// The image to upgrade with, process-wide.
std::string& FirmwareUpgradeFile();
/// The pid of the upgrade child, process-wide; -1 before any.
int& FirmwareUpgradePid();
/// True while the firmware tool holds its lock file (or the lock cannot be checked).
bool IsFirmareUpgradeInProgress();
/// The first line (at most 99 characters) of the firmware tool's status file, read under a shared lock
/// when the tool lets go of it within a second, else without; opened is false (and the line "") when
/// the file cannot be opened.
std::string ReadFirmwareStatusLine(bool& opened);

}  // namespace panelkit::util

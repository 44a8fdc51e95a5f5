// panelkit util: flag files shared with the main loop, the firmware-upgrade process, environment and file helpers.
#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace panelkit::web {
class Settings;
}

namespace panelkit::util {

/// What FindFiles keeps.
enum class FindFilesType { Regular = 0, Directory = 1, Any = 2 };

/// True for a character that occurs in the held set.
struct containsChars {
    /// The characters to look for.
    std::string chars;
    /// True when c is one of the characters.
    bool operator()(char c) const { return chars.find(c) != std::string::npos; }
};

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
/// Forks a detached child that runs the device's reboot with a 5-second delay.
void ForkReboot();
/// The text as one shell word, whatever it holds (device paths: the device root may hold blanks).
std::string ShellQuote(const std::string& text);
/// A device path (under the device root) as one shell word, for fixed command lines.
std::string ShellDevicePath(const std::string& path);
/// Runs a fixed command line through the shell; at most maxBytes of its output, ending in
/// "..." when cut (and at least 4 bytes long).
std::string ShellCommand(const std::string& cmd, std::size_t maxBytes);
/// Runs a command through the maker's library, its output in out; the library's result.
int ShellCommand(const std::string& cmd, std::string& out);
/// True when the path exists.
bool FileExists(const std::string& path);
/// Up to maxBytes from the start of the file into out; false when it cannot be read.
bool ReadFileHead(const std::string& path, std::size_t maxBytes, std::string& out);
/// The file's size, 0 when it cannot be read.
unsigned FileSize(const std::string& path);
/// Moves a file, across file systems too; false when it could not.
bool MoveFile(const std::string& from, const std::string& to);
/// The text without any of the characters in chars.
std::string StripChars(const std::string& text, const std::string& chars);
/// Reads the issuer and subject of the certificate between <cert> and </cert> in the file.
bool GetCertificateDetails(const std::string& path, std::string& issuer, std::string& subject);
/// "ulm3_" and the assembly serial number, read once.
std::string DeviceName();
/// The assembly serial number.
std::string SystemAssemblySN();
/// The device ID, or the reason it cannot be shown.
std::string SystemDeviceID();
/// The device's address: br1's, else eth0's, else eth1's, else "".
std::string GetCurrentIPAddress();
/// The address GetCurrentIPAddress picks from (interface, IPv4 address) pairs; a later pair of an interface wins.
std::string CurrentIPAddressOf(const std::vector<std::pair<std::string, std::string>>& addresses);
/// The names in dir matching the POSIX extended expression, in directory order.
std::vector<std::string> FindFiles(const std::string& dir, FindFilesType type, const std::string& pattern);
/// The environment variable, "" when not set.
std::string GetEnv(const std::string& name);
/// The environment variable when set and not empty, else the string at the settings path, else "".
std::string EnvOrSettings(const std::string& envName, const std::string& path, const web::Settings& settings);

}  // namespace panelkit::util

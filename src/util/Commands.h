// panelkit util: fixed shell command lines with captured output, and the detached reboot and upgrade children.
#pragma once

#include <cstddef>
#include <string>

namespace panelkit::util {

/// The text as one shell word, whatever it holds (device paths: the device root may hold blanks).
std::string ShellQuote(const std::string& text);
/// A device path (under the device root) as one shell word, for fixed command lines.
std::string ShellDevicePath(const std::string& path);
/// Runs a fixed command line through the shell; at most maxBytes of its output, ending in
/// "..." when cut (and at least 4 bytes long).
std::string ShellCommand(const std::string& cmd, std::size_t maxBytes);
/// Runs a command through the maker's library, its output in out; the library's result.
int ShellCommand(const std::string& cmd, std::string& out);
/// Forks a detached child that stops the applications under appsDir and becomes the
/// firmware tool; the child's pid, or a negative value when the fork failed.
int ForkFirmwareUpgrade(const std::string& file, const std::string& appsDir);
/// Forks a detached child that runs the device's reboot with a 5-second delay.
void ForkReboot();

}  // namespace panelkit::util

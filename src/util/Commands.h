// panelkit util: device programs run with arguments or fixed shell lines, and the detached reboot and upgrade.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace panelkit::util {

/// The text as one shell word, whatever it holds (device paths: the device root may hold blanks).
std::string ShellQuote(const std::string& text);
/// Runs a fixed command line through the shell; at most maxBytes of its output, cut as Bounded cuts.
std::string ShellCommand(const std::string& cmd, std::size_t maxBytes);
/// Runs a command through the maker's library, its output in out; the library's result.
int ShellCommand(const std::string& cmd, std::string& out);
/// Runs argv[0] (looked up on PATH) with the arguments and no shell; at most maxBytes of its
/// standard output, cut as Bounded cuts; "" when the program cannot be started.
std::string Run(const std::vector<std::string>& argv, std::size_t maxBytes);
/// Runs argv[0] as Run does, with its standard error captured along with its standard output (as `2>&1` does).
std::string RunMerged(const std::vector<std::string>& argv, std::size_t maxBytes);
/// Runs argv[0] (looked up on PATH) with the arguments and no shell, output not captured; the wait
/// status as system() gives it (0 on success), 127 << 8 when the program cannot be started.
int RunStatus(const std::vector<std::string>& argv);
/// Runs argv[0] (looked up on PATH) with the arguments and no shell, the input on its standard input and its
/// standard output discarded; the wait status as RunStatus gives it.
int RunWithInput(const std::vector<std::string>& argv, const std::string& input);
/// The text when it fits in maxBytes; else its first maxBytes bytes, the last 3 of them replaced
/// by "..." when that leaves at least 4 bytes.
std::string Bounded(std::string text, std::size_t maxBytes);
/// Stops the applications under appsDir, then starts the firmware tool detached; the tool's pid,
/// or a negative value when it could not be started.
int ForkFirmwareUpgrade(const std::string& file, const std::string& appsDir);
/// Starts the device's reboot, detached, with a 5-second delay.
void ForkReboot();

}  // namespace panelkit::util

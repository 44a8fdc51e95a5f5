// Maker's utility library, simulated: command execution and the device's identity.
#pragma once

#include <string>

namespace qor_util {

/// Device-level helpers. The identity lives in $PANELKIT_DEVICE_ROOT/etc/qor/.
class system {
public:
    /// Runs a command through the shell and captures its standard output; the exit status, -1 when it could not run.
    static int exec(const std::string& command, std::string& output);
    /// The assembly serial number; status 0 when read, 1 when not set.
    static std::string GetBarcodeASN(int* status = nullptr);
    /// Stores the assembly serial number; non-zero on success.
    static int SetBarcodeASN(const std::string& number);
    /// The device ID; status 0 when valid, 1 when not initialised, 2 when invalid.
    static std::string GetDeviceID(int* status);
};

}  // namespace qor_util

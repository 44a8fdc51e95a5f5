// panelkit util: device paths resolved through the device root, so that a simulated device never touches the host.
#pragma once

#include <string>

namespace panelkit::util {

/// Sets the device root ("" on the device itself); a relative root is made absolute now.
/// Also exported as PANELKIT_DEVICE_ROOT, and the root's program folders go first on PATH.
void SetDeviceRoot(const std::string& root);
/// The device root; until SetDeviceRoot is called, the environment's PANELKIT_DEVICE_ROOT.
const std::string& DeviceRoot();
/// The device root followed by the absolute device path ("/tmp/x" → "<root>/tmp/x").
std::string DevicePath(const std::string& path);

}  // namespace panelkit::util

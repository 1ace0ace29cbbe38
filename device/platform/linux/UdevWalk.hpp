#pragma once

#include <functional>
#include <optional>
#include <string>

struct udev_device;

namespace karvex::device {

/// Calls `visit` for each device of a kernel subsystem ("usb", "tty"), in libudev's order (by path in sysfs),
/// until it gives false. Needs no running udevd. A device that leaves during the walk is passed over. Gives
/// 0, or the error number if the list could not be had; then nothing was visited.
int walkUdev(const char* subsystem, const std::function<bool(udev_device&)>& visit);

/// A sysfs attribute of the device, without the line end; nothing if it has none of that name.
std::optional<std::string> udevAttribute(udev_device& device, const char* name);

}  // namespace karvex::device

#pragma once

#include <optional>
#include <vector>

#include "device/platform/UsbBus.hpp"

struct udev_device;

namespace karvex::device {

/// Where a device is attached: the number of its bus, then the ports on the way to it. The kernel names a
/// device after it: "usb1" is at {1}, "1-4.10" at {1, 4, 10}.
using BusPosition = std::vector<unsigned>;

/// Thread-safe: yes.
/// Realtime-safe: no, it allocates.
BusPosition positionOf(udev_device& device);

/// True for a USB device, and false for one of its interfaces.
/// Thread-safe: yes.
/// Realtime-safe: yes.
bool isUsbDevice(udev_device& device);

/// Its descriptors, as sysfs has them. A number that isn't wholly hexadecimal or has more than 16 bits is
/// absent; the strings come as UsbText.hpp says. Thread-safe: yes. Realtime-safe: no, it reads files of the
/// system.
UsbDevice usbDeviceOf(udev_device& device);

}  // namespace karvex::device

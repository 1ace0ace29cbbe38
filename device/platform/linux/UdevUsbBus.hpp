#pragma once

#include "device/platform/UsbBus.hpp"

namespace karvex::device {

/// The USB devices that the kernel has enumerated, root hubs included, read from sysfs through libudev. Bus
/// order is that of the bus numbers and, on a bus, of the ports on the way to the device: 1-2 before 1-2.1
/// before 1-10. A number that isn't wholly hexadecimal or has more than 16 bits is absent; the strings come
/// as UsbText.hpp tells. The devices themselves are not touched. Keeps no state: each walk sees the bus as it
/// is.
class UdevUsbBus final : public UsbBus {
 public:
  int forEachDevice(const std::function<void(const UsbDevice&)>& visit) override;
};

}  // namespace karvex::device

#include "device/platform/linux/UdevUsbBus.hpp"

#include <libudev.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "device/platform/linux/UdevUsbDevice.hpp"
#include "device/platform/linux/UdevWalk.hpp"

namespace karvex::device {

int UdevUsbBus::forEachDevice(const std::function<void(const UsbDevice&)>& visit) {
  std::vector<std::pair<BusPosition, UsbDevice>> found;
  const int error = walkUdev("usb", [&found](udev_device& device) {
    if (isUsbDevice(device)) {
      found.emplace_back(positionOf(device), usbDeviceOf(device));
    }
    return true;
  });
  if (error != 0) {
    return error;
  }
  std::sort(found.begin(), found.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
  for (const auto& [position, device] : found) {
    visit(device);
  }
  return 0;
}

}  // namespace karvex::device

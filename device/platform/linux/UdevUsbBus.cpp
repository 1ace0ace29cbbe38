#include "device/platform/linux/UdevUsbBus.hpp"

#include <libudev.h>

#include <algorithm>
#include <charconv>
#include <string_view>
#include <utility>
#include <vector>

#include "device/platform/linux/UdevWalk.hpp"
#include "device/platform/linux/UsbText.hpp"

namespace karvex::device {
namespace {

/// Where a device is attached: the number of its bus, then the ports on the way to it. The kernel names a
/// device after it: "usb1" is at {1}, "1-4.10" at {1, 4, 10}.
using BusPosition = std::vector<unsigned>;

BusPosition positionInName(std::string_view name) {
  BusPosition position;
  const char* const end = name.data() + name.size();
  for (const char* at = name.data(); at != end;) {
    unsigned number = 0;
    const auto [after, error] = std::from_chars(at, end, number);
    if (error == std::errc()) {
      position.push_back(number);
    }
    at = std::max(after, at + 1);
  }
  return position;
}

std::optional<std::int32_t> hexadecimalAttribute(udev_device& device, const char* name) {
  const auto text = udevAttribute(device, name);
  if (!text) {
    return std::nullopt;
  }
  std::uint16_t value = 0;
  const char* const end = text->data() + text->size();
  const auto [after, error] = std::from_chars(text->data(), end, value, 16);
  if (error != std::errc() || after != end) {
    return std::nullopt;
  }
  return value;
}

UsbDevice readDevice(udev_device& device) {
  UsbDevice result{
      .idVendor = hexadecimalAttribute(device, "idVendor"),
      .idProduct = hexadecimalAttribute(device, "idProduct"),
      .bcdDevice = hexadecimalAttribute(device, "bcdDevice"),
      .serialNumber = std::nullopt,
      .product = std::nullopt,
  };
  if (const auto raw = udevAttribute(device, "serial")) {
    result.serialNumber = serialNumberFromUsb(*raw).value_or("");
  }
  if (const auto raw = udevAttribute(device, "product")) {
    result.product = productNameFromUsb(*raw);
  }
  return result;
}

bool isUsbDevice(udev_device& device) {
  const char* const type = udev_device_get_devtype(&device);
  return type != nullptr && std::string_view(type) == "usb_device";  // and not one of its interfaces
}

}  // namespace

int UdevUsbBus::forEachDevice(const std::function<void(const UsbDevice&)>& visit) {
  std::vector<std::pair<BusPosition, UsbDevice>> found;
  const int error = walkUdev("usb", [&found](udev_device& device) {
    if (isUsbDevice(device)) {
      found.emplace_back(positionInName(udev_device_get_sysname(&device)), readDevice(device));
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

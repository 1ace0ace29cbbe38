#include "device/platform/linux/UdevUsbDevice.hpp"

#include <libudev.h>

#include <algorithm>
#include <charconv>
#include <string_view>

#include "device/platform/linux/UdevWalk.hpp"
#include "device/platform/linux/UsbText.hpp"

namespace karvex::device {
namespace {

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

}  // namespace

BusPosition positionOf(udev_device& device) {
  const std::string_view name = udev_device_get_sysname(&device);
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

bool isUsbDevice(udev_device& device) {
  const char* const type = udev_device_get_devtype(&device);
  return type != nullptr && std::string_view(type) == "usb_device";  // and not one of its interfaces
}

UsbDevice usbDeviceOf(udev_device& device) {
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

}  // namespace karvex::device

#include "device/platform/linux/SerialNodes.hpp"

#include <libudev.h>

#include "device/platform/linux/UdevWalk.hpp"

namespace karvex::device {
namespace {

/// The serial number of the USB device that the terminal is an interface of; nothing for any other terminal.
std::optional<std::string> usbSerialNumberOf(udev_device& tty) {
  udev_device* const board = udev_device_get_parent_with_subsystem_devtype(&tty, "usb", "usb_device");
  return board != nullptr ? udevAttribute(*board, "serial") : std::nullopt;
}

}  // namespace

std::optional<std::string> ttyNodeForSerialNumber(std::string_view serialNumber) {
  std::optional<std::string> node;
  if (serialNumber.empty()) {
    return node;
  }
  walkUdev("tty", [&node, serialNumber](udev_device& tty) {
    if (usbSerialNumberOf(tty) != serialNumber) {
      return true;
    }
    if (const char* const path = udev_device_get_devnode(&tty)) {
      node = path;
    }
    return !node.has_value();
  });
  return node;
}

}  // namespace karvex::device

#pragma once

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <umockdev.h>

#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

namespace karvex::device {

/// A made-up /sys and /dev, which this process sees instead of the machine's own for as long as the object
/// lives. The process has to run under umockdev's preload library.
class SysfsTree {
 public:
  SysfsTree() { std::filesystem::create_directory(root / "dev"); }
  ~SysfsTree() { g_object_unref(testbed); }
  SysfsTree(const SysfsTree&) = delete;
  SysfsTree& operator=(const SysfsTree&) = delete;

  /// Each of these returns the new device's path below /sys. `attributes` are idVendor, idProduct, bcdDevice,
  /// serial and product, or the first of them.
  std::string addUsbDevice(const std::string& name, const std::vector<std::string>& attributes) {
    std::string text = "DEVTYPE=usb_device";
    const char* attribute = "idVendor\0idProduct\0bcdDevice\0serial\0product";
    for (const auto& value : attributes) {
      const std::vector<std::uint8_t> bytes(value.begin(), value.end());
      text += fmt::format("\nH: {}={:02X}0A", attribute,
                          fmt::join(bytes, ""));  // with a line end, as the kernel writes
      attribute += std::strlen(attribute) + 1;
    }
    return add("/devices/" + name, "usb", text);
  }
  std::string addInterface(const std::string& usbDevice, const std::string& name) {
    return add(usbDevice + "/" + name, "usb", "DEVTYPE=usb_interface\nA: bInterfaceNumber=00");
  }
  std::string add(const std::string& path, std::string_view subsystem, std::string_view properties) {
    const auto text = fmt::format("P: {}\nE: SUBSYSTEM={}\nE: {}\n", path, subsystem, properties);
    g_autoptr(GError) error = nullptr;
    if (umockdev_testbed_add_from_string(testbed, text.c_str(), &error) == FALSE) {
      throw std::runtime_error(text + error->message);
    }
    return path;
  }
  void remove(const std::string& path) { umockdev_testbed_remove_device(testbed, ("/sys" + path).c_str()); }

  UMockdevTestbed* const testbed = umockdev_testbed_new();
  /// The directory on disk with what is seen as /sys and /dev.
  const std::filesystem::path root = [this] {
    g_autofree gchar* directory = umockdev_testbed_get_root_dir(testbed);
    return std::filesystem::path(directory);
  }();
};

}  // namespace karvex::device

#pragma once

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <umockdev.h>

#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace karvex::device {

/// A made-up /sys and /dev, which this process sees instead of the machine's own for as long as the object
/// lives. The process has to run under umockdev's preload library.
class SysfsTree {
 public:
  using Entries = std::vector<std::pair<std::string, std::string>>;

  SysfsTree() { std::filesystem::create_directory(root / "dev"); }
  ~SysfsTree() { g_object_unref(testbed); }
  SysfsTree(const SysfsTree&) = delete;
  SysfsTree& operator=(const SysfsTree&) = delete;

  /// Each of these returns the new device's path below /sys. `attributes` end with a line end, as the kernel
  /// writes them.
  std::string addUsbDevice(const std::string& name, const Entries& attributes) {
    return add("/devices/" + name, "usb", "DEVTYPE=usb_device", attributes);
  }
  std::string addInterface(const std::string& usbDevice, const std::string& name) {
    return add(usbDevice + "/" + name, "usb", "DEVTYPE=usb_interface", {{"bInterfaceNumber", "00"}});
  }
  /// Without a node in /dev.
  std::string addTty(const std::string& name, const std::string& interface) {
    return add(interface + "/" + name, "tty", "DEVNAME=" + name, {});
  }
  std::string add(const std::string& path, std::string_view subsystem, std::string_view properties,
                  const Entries& attributes) {
    auto text = fmt::format("P: {}\nE: SUBSYSTEM={}\nE: {}\n", path, subsystem, properties);
    for (const auto& [name, value] : attributes) {
      text += fmt::format(
          "H: {}={:02X}0A\n", name,
          fmt::join(std::basic_string_view(reinterpret_cast<const std::uint8_t*>(value.data()), value.size()),
                    ""));
    }
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

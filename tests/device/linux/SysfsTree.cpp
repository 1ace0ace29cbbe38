#include "tests/device/linux/SysfsTree.hpp"

#include <umockdev.h>

#include <memory>
#include <stdexcept>

namespace karvex::device {
namespace {

using OwnedText = std::unique_ptr<gchar, decltype(&g_free)>;

/// A null-ended list of names and values in turn, as umockdev wants it.
class NamesAndValues {
 public:
  explicit NamesAndValues(SysfsTree::Entries entries) : entries_(std::move(entries)) {
    for (auto& [name, value] : entries_) {
      list_.push_back(name.data());
      list_.push_back(value.data());
    }
    list_.push_back(nullptr);
  }

  gchar** data() { return list_.data(); }

 private:
  SysfsTree::Entries entries_;
  std::vector<gchar*> list_;
};

}  // namespace

SysfsTree::SysfsTree() : testbed_(umockdev_testbed_new()) {
  if (umockdev_in_mock_environment() == FALSE) {
    g_object_unref(testbed_);
    throw std::runtime_error("to be run under umockdev-wrapper");
  }
}

SysfsTree::~SysfsTree() {
  g_object_unref(testbed_);
}

std::string SysfsTree::addUsbDevice(const std::string& name, const Entries& attributes) {
  return add({.subsystem = "usb",
              .name = name,
              .parent = "",
              .attributes = attributes,
              .properties = {{"DEVTYPE", "usb_device"}}});
}

std::string SysfsTree::addInterface(const std::string& usbDevice, const std::string& name) {
  return add({.subsystem = "usb",
              .name = name,
              .parent = usbDevice,
              .attributes = {{"bInterfaceNumber", "00"}},
              .properties = {{"DEVTYPE", "usb_interface"}}});
}

std::string SysfsTree::addTty(const std::string& name, const std::string& parent) {
  return add({.subsystem = "tty",
              .name = name,
              .parent = parent,
              .attributes = {},
              .properties = {{"DEVNAME", name}}});
}

void SysfsTree::remove(const std::string& path) {
  umockdev_testbed_remove_device(testbed_, path.c_str());
}

std::string SysfsTree::sysDirectory() const {
  return OwnedText(umockdev_testbed_get_sys_dir(testbed_), g_free).get();
}

std::string SysfsTree::add(Device device) {
  for (auto& [attribute, value] : device.attributes) {
    value += '\n';
  }
  NamesAndValues attributes(std::move(device.attributes));
  NamesAndValues properties(std::move(device.properties));
  const gchar* const parent = device.parent.empty() ? nullptr : device.parent.c_str();
  const OwnedText path(umockdev_testbed_add_devicev(testbed_, device.subsystem.c_str(), device.name.c_str(),
                                                    parent, attributes.data(), properties.data()),
                       g_free);
  return path.get();
}

}  // namespace karvex::device

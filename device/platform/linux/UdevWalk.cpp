#include "device/platform/linux/UdevWalk.hpp"

#include <libudev.h>

#include <cerrno>
#include <memory>

namespace karvex::device {
namespace {

struct Release {
  void operator()(udev* context) const { udev_unref(context); }
  void operator()(udev_enumerate* list) const { udev_enumerate_unref(list); }
  void operator()(udev_device* device) const { udev_device_unref(device); }
};

template <typename T>
using Held = std::unique_ptr<T, Release>;

/// libudev gives negative error numbers, and null with errno set where it can't make an object.
int errorOf(int result) {
  return result < 0 ? -result : 0;
}

int errorOfNull() {
  return errno != 0 ? errno : ENOMEM;
}

}  // namespace

int walkUdev(const char* subsystem, const std::function<bool(udev_device&)>& visit) {
  errno = 0;
  const Held<udev> context(udev_new());
  if (context == nullptr) {
    return errorOfNull();
  }
  const Held<udev_enumerate> list(udev_enumerate_new(context.get()));
  if (list == nullptr) {
    return errorOfNull();
  }
  if (const int error = errorOf(udev_enumerate_add_match_subsystem(list.get(), subsystem)); error != 0) {
    return error;
  }
  if (const int error = errorOf(udev_enumerate_scan_devices(list.get())); error != 0) {
    return error;
  }
  udev_list_entry* entry = nullptr;
  udev_list_entry_foreach(entry, udev_enumerate_get_list_entry(list.get())) {
    const Held<udev_device> device(
        udev_device_new_from_syspath(context.get(), udev_list_entry_get_name(entry)));
    if (device != nullptr && !visit(*device)) {
      break;
    }
  }
  return 0;
}

std::optional<std::string> udevAttribute(udev_device& device, const char* name) {
  const char* value = udev_device_get_sysattr_value(&device, name);
  return value != nullptr ? std::optional<std::string>(value) : std::nullopt;
}

}  // namespace karvex::device

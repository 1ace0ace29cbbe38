#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace karvex::device {

/// One device on the USB bus, with those of its descriptors (USB 2.0, 9.6.1) that the program looks at. A
/// field that the device or the platform doesn't give is absent.
struct UsbDevice {
  std::optional<std::int32_t> idVendor;
  std::optional<std::int32_t> idProduct;
  std::optional<std::int32_t> bcdDevice;
  std::optional<std::string> serialNumber;  ///< empty if the device has one that can't be used
  std::optional<std::string> product;
};

/// The walk over the machine's USB devices. Called on the main thread.
class UsbBus {
 public:
  virtual ~UsbBus() = default;

  /// Calls `visit` for each device, in bus order. Gives 0, or the platform's error number if the walk could
  /// not be made; then nothing was visited.
  virtual int forEachDevice(const std::function<void(const UsbDevice&)>& visit) = 0;
};

}  // namespace karvex::device

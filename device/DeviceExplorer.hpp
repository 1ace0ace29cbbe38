#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "device/platform/SerialInterfaces.hpp"
#include "device/platform/UsbBus.hpp"
#include "foundation/Published.hpp"
#include "records/DeviceInfo.hpp"

namespace karvex::device {

/// The boards on the USB bus that can belong to the equipment. Each explorer has a list of its own, which
/// changes only when this explorer scans: it goes stale with the bus, so callers scan again rather than trust
/// it. All operations are for the main thread.
class DeviceExplorer {
 public:
  static constexpr std::int32_t PJRC_VENDOR_ID = 0x16C0;

  /// Both must outlive the explorer.
  DeviceExplorer(UsbBus& bus, SerialInterfaces& serialInterfaces);

  /// What the last scan found, in bus order.
  foundation::Published<std::vector<records::DeviceInfo>> devices;
  /// What went wrong with the last report to the service; empty when nothing did.
  foundation::Published<std::string> lastError;

  /// Fills `devices` anew; observers see it emptied and then grow by one record at a time. A bus that can't
  /// be walked leaves it empty and says so on standard output.
  void scanUSBDevices();

  /// The first record with exactly this serial number; without one, a record whose texts are empty.
  records::DeviceInfo deviceForSerialNumber(const std::string& serialNumber) const;

  /// True if the last scan found a board in its HalfKay bootloader.
  bool isHalfkayDevicePresent() const;

  /// Asks the system, not the list, whether the board's serial interface is there at this moment.
  bool isSerialInterfacePresent(const std::string& serialNumber) const;

 private:
  UsbBus& bus_;
  SerialInterfaces& serialInterfaces_;
};

}  // namespace karvex::device

#pragma once

#include <cstdint>
#include <string>

namespace karvex::records {

/// One USB device that can belong to the equipment, as a walk of the bus found it. The numbers are the fields
/// of the USB device descriptor (USB 2.0, table 9-8).
struct DeviceInfo {
  std::string portName;      ///< "/dev/cu.usbmodem", the serial number, "1"
  std::string deviceName;    ///< product string, or "Raw HID Device"
  std::string serialNumber;  ///< serial number string
  std::int32_t USBvendorId = 0;
  std::int32_t USBproductId = 0;
  std::int32_t USBbcdDevice = 0;
  std::string USBproductName;  ///< same text as `deviceName`

  bool operator==(const DeviceInfo&) const = default;
};

}  // namespace karvex::records

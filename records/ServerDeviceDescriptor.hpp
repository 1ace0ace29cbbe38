#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace karvex::records {

/// What the firmware service says of one device. The JSON keys are the field names.
struct ServerDeviceDescriptor {
  bool isValid = false;                 ///< kept, not acted on
  std::optional<std::string> midiName;  ///< kept, not acted on
  std::string deviceSerialNumber;       ///< USB serial number: what a device on the bus is matched by
  std::string mcu;                      ///< a name of the loader's microcontroller table
  std::string firmwareName;
  std::string firmwareVersion;  ///< the version that the device should carry
  std::uint32_t setupDelay =
      0;                        ///< milliseconds to wait behind this device, before the next one is looked at
  std::string serverURL;        ///< first part of the firmware file's URL
  std::string serverDirectory;  ///< second part
  std::string serverFile;       ///< third part
  std::int64_t sequenceNumber = 0;  ///< for showing; the order of the list is the order of the upgrade
  std::string currentVersion;       ///< the version that the device carries now

  bool operator==(const ServerDeviceDescriptor&) const = default;
};

}  // namespace karvex::records

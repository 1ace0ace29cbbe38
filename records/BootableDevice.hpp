#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "foundation/text/Uuid.hpp"

namespace karvex::records {

/// One device that can be upgraded: one row of the table and one step of a run. It joins what the firmware
/// service, the USB bus and the MIDI layer know of it.
struct BootableDevice {
  foundation::Uuid id = foundation::Uuid::random();  ///< new at each scan
  std::optional<std::uint32_t> midiRef;              ///< the platform's object for the MIDI device
  std::optional<std::string> deviceName;
  std::optional<bool> isOffline = false;  ///< absent if the MIDI device doesn't say
  std::string portSerialNumber;           ///< USB serial number; the middle part of the port's name
  std::string firmwareServerURL;          ///< the three parts of the firmware file's URL
  std::string firmwareDir;
  std::string firmwareFile;
  std::string firmwareName;
  std::string firmwareVersion;      ///< what the device should carry
  std::string currentVersion;       ///< what the device carries
  std::string mcu;                  ///< a name of the loader's microcontroller table
  std::int64_t sequenceNumber = 0;  ///< for showing
  std::uint32_t setupDelay = 0;     ///< milliseconds
  std::uint32_t status = 0;         ///< a load status, 0 to 12
  std::optional<std::int32_t> USBVendorId;
  std::optional<std::int32_t> USBProductId;  ///< halfKayProductId in the bootloader
  std::optional<std::int32_t> USBBCDDevice;
  float dlProgress = 0;  ///< nobody writes it
  float ulProgress = 0;  ///< nobody writes it

  bool operator==(const BootableDevice&) const = default;
};

}  // namespace karvex::records

/// Over all fields.
template <>
struct std::hash<karvex::records::BootableDevice> {
  std::size_t operator()(const karvex::records::BootableDevice& device) const noexcept;
};

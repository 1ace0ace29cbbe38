#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace karvex::rig {

struct ServiceFault;

/// One device as the service lists it. The JSON keys are the field names.
struct ServedDevice {
  bool isValid = true;
  std::optional<std::string> midiName;  ///< the key is left out if there is none
  std::string deviceSerialNumber;
  std::string mcu;
  std::string firmwareName;
  std::string firmwareVersion;
  std::uint32_t setupDelay = 0;  ///< milliseconds
  std::string serverURL;         ///< the firmware's URL is these three, joined as they are
  std::string serverDirectory;
  std::string serverFile;
  std::int64_t sequenceNumber = 0;
  std::string currentVersion;
};

/// The keys of a device in the list, in their order.
std::span<const std::string_view> servedDeviceKeys();

/// The devices as a JSON array (RFC 8259), in the order given. The texts must be UTF-8.
std::string listText(std::span<const ServedDevice> devices);

/// The list with the fault in its last element, so that all elements before it are good; a list without any
/// gets one. Text that is no list of devices, and a fault that is not one of a list, change nothing.
std::string spoilList(const std::string& list, const ServiceFault& fault);

}  // namespace karvex::rig

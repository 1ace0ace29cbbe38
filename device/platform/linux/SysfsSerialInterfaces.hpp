#pragma once

#include "device/platform/SerialInterfaces.hpp"

namespace karvex::device {

/// An interface counts as present while a terminal in sysfs belongs to the USB board with the serial number
/// in the interface's name. Keeps no state.
class SysfsSerialInterfaces final : public SerialInterfaces {
 public:
  bool isPresent(const std::string& interfaceName) override;
};

}  // namespace karvex::device

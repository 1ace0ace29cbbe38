#include "device/platform/linux/SysfsSerialInterfaces.hpp"

#include "device/PortName.hpp"
#include "device/platform/linux/SerialNodes.hpp"

namespace karvex::device {

bool SysfsSerialInterfaces::isPresent(const std::string& interfaceName) {
  const auto serialNumber = serialNumberInInterfaceName(interfaceName);
  return serialNumber && ttyNodeForSerialNumber(*serialNumber).has_value();
}

}  // namespace karvex::device

#include "device/PortName.hpp"

#include <fmt/format.h>

namespace karvex::device {

std::string portNameFor(std::string_view serialNumber) {
  return fmt::format("{}{}{}", portNamePrefix, serialNumber, firstInterfaceSuffix);
}

std::string interfaceNameFor(std::string_view serialNumber) {
  return fmt::format("{}{}{}", interfaceNamePrefix, serialNumber, firstInterfaceSuffix);
}

std::optional<std::string> serialNumberInInterfaceName(std::string_view interfaceName) {
  if (interfaceName.size() <= interfaceNamePrefix.size() + firstInterfaceSuffix.size() ||
      !interfaceName.starts_with(interfaceNamePrefix) || !interfaceName.ends_with(firstInterfaceSuffix)) {
    return std::nullopt;
  }
  interfaceName.remove_prefix(interfaceNamePrefix.size());
  interfaceName.remove_suffix(firstInterfaceSuffix.size());
  return std::string(interfaceName);
}

}  // namespace karvex::device

#include "device/PortName.hpp"

#include <fmt/format.h>

namespace karvex::device {
namespace {

std::optional<std::string> between(std::string_view prefix, std::string_view name, std::string_view suffix) {
  if (name.size() <= prefix.size() + suffix.size() || !name.starts_with(prefix) || !name.ends_with(suffix)) {
    return std::nullopt;
  }
  name.remove_prefix(prefix.size());
  name.remove_suffix(suffix.size());
  return std::string(name);
}

}  // namespace

std::string portNameFor(std::string_view serialNumber) {
  return fmt::format("{}{}{}", portNamePrefix, serialNumber, firstInterfaceSuffix);
}

std::string interfaceNameFor(std::string_view serialNumber) {
  return fmt::format("{}{}{}", interfaceNamePrefix, serialNumber, firstInterfaceSuffix);
}

std::optional<std::string> serialNumberInInterfaceName(std::string_view interfaceName) {
  return between(interfaceNamePrefix, interfaceName, firstInterfaceSuffix);
}

std::optional<std::string> serialNumberInPortName(std::string_view portName) {
  return between(portNamePrefix, portName, firstInterfaceSuffix);
}

}  // namespace karvex::device

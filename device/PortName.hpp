#pragma once

#include <optional>
#include <string>
#include <string_view>

/// The names that a board's serial port and its interface have by rule. They are made from the board's USB
/// serial number, never looked up, and are the same texts on every platform: what a user or the service sees
/// of a port.
namespace karvex::device {

inline constexpr std::string_view portNamePrefix = "/dev/cu.usbmodem";
inline constexpr std::string_view interfaceNamePrefix = "usbmodem";
inline constexpr std::string_view firstInterfaceSuffix = "1";

/// The name of the port, for example /dev/cu.usbmodem12341 for the serial number 1234.
std::string portNameFor(std::string_view serialNumber);

/// The name of the interface, for example usbmodem12341 for the serial number 1234.
std::string interfaceNameFor(std::string_view serialNumber);

/// The serial number inside an interface's name; nothing if the name isn't made by the rule.
std::optional<std::string> serialNumberInInterfaceName(std::string_view interfaceName);

/// The same for a port's name.
std::optional<std::string> serialNumberInPortName(std::string_view portName);

}  // namespace karvex::device

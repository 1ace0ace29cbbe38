#include "device/SerialPortError.hpp"

#include <fmt/format.h>

namespace karvex::device {
namespace {

std::string causeOf(const TerminalRefusal& refusal) {
  switch (refusal.cause) {
    case TerminalRefusal::Cause::absent:
      return "it is not there, the device may have been unplugged";
    case TerminalRefusal::Cause::inUse:
      return "it is in use by " + (refusal.detail.empty() ? "another program" : refusal.detail);
    case TerminalRefusal::Cause::notPermitted:
      return "this user has no permission to use it";
    case TerminalRefusal::Cause::other:
      break;
  }
  return refusal.detail.empty() ? "the system names no reason" : refusal.detail;
}

}  // namespace

std::string describe(PortError error, std::string_view path) {
  switch (error) {
    case PortError::failedToOpen:
      return fmt::format("Serial port {} can't be opened", path);
    case PortError::invalidPath:
      return "A serial port without a path can't be opened";
    case PortError::mustReceiveOrTransmit:
      return fmt::format("Serial port {} must be opened to receive, to transmit or to do both", path);
    case PortError::mustBeOpen:
      return fmt::format("Serial port {} is not open", path);
    case PortError::stringsMustBeUTF8:
      return fmt::format("Text for serial port {} is not valid UTF-8", path);
    case PortError::unableToConvertByteToCharacter:
      return fmt::format("Serial port {} received a byte that is no ASCII character", path);
    case PortError::deviceNotConnected:
      return fmt::format("The device at serial port {} is no longer connected", path);
    case PortError::instanceAlreadyOpen:
      return fmt::format("Serial port {} is open already", path);
    case PortError::invalidPort:
      return fmt::format("{} is not a serial port", path);
  }
  return fmt::format("Serial port {} failed with code {}", path, static_cast<std::int32_t>(error));
}

std::string describe(const TerminalRefusal& refusal, std::string_view path) {
  const auto node = refusal.node.empty() ? "" : fmt::format(" ({})", refusal.node);
  return fmt::format("Serial port {}{} can't be opened: {}", path, node, causeOf(refusal));
}

}  // namespace karvex::device

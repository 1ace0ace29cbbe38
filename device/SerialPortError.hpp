#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

#include "device/platform/TerminalNode.hpp"

namespace karvex::device {

/// What can go wrong with a serial port. The values are the error codes.
enum class PortError : std::int32_t {
  failedToOpen = -1,
  invalidPath = 0,
  mustReceiveOrTransmit = 1,
  mustBeOpen = 2,
  stringsMustBeUTF8 = 3,
  unableToConvertByteToCharacter = 4,
  deviceNotConnected = 5,
  instanceAlreadyOpen = 6,
  invalidPort = 7,
};

/// A PortError on its way to the caller. what() is a sentence, without a full stop, that users and dealers
/// get to read.
class PortException : public std::runtime_error {
 public:
  PortException(PortError error, const std::string& text) : std::runtime_error(text), error_(error) {}

  PortError error() const noexcept { return error_; }
  std::int32_t code() const noexcept { return static_cast<std::int32_t>(error_); }

 private:
  PortError error_;
};

/// The sentence for an error on the port of that path.
std::string describe(PortError error, std::string_view path);

/// The sentence for failedToOpen whose cause is known.
std::string describe(const TerminalRefusal& refusal, std::string_view path);

}  // namespace karvex::device

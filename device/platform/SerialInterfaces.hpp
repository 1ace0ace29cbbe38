#pragma once

#include <string>

namespace karvex::device {

/// The test whether a board's USB serial interface is attached and enumerated; it opens nothing. Called on
/// the main thread.
class SerialInterfaces {
 public:
  virtual ~SerialInterfaces() = default;

  /// True if the system lists an interface with this name: "usbmodem", the board's USB serial number, "1". A
  /// list that can't be had gives false.
  virtual bool isPresent(const std::string& interfaceName) = 0;
};

}  // namespace karvex::device

#pragma once

#include <string>

#include "device/platform/TerminalNode.hpp"
#include "foundation/Published.hpp"
#include "foundation/run/Runtime.hpp"
#include "records/BootableDevice.hpp"

namespace karvex::device {

/// The two steps before a device is programmed: can its serial port be had, and the request that sends it
/// from its firmware into the HalfKay bootloader. The request is a change of the port's line speed to 134
/// baud and nothing else: no byte is written or read. Each operation is one attempt and leaves no port open
/// behind a success. Main thread.
class SerialPortManagement {
 public:
  /// Both must outlive this object.
  SerialPortManagement(TerminalNodes& nodes, foundation::Runtime& runtime)
      : nodes_(nodes), runtime_(runtime) {}
  virtual ~SerialPortManagement() = default;

  foundation::Published<bool> halfkayModeDetected{false};
  foundation::Published<bool> portBusyError{false};
  foundation::Published<bool> showErrorModal{false};
  /// Why the last attempt failed, for the user. Nothing here clears it.
  foundation::Published<std::string> errorText;

  /// Opens the port and closes it again. False if that can't be done, or if the device is in its bootloader
  /// already, which touches no port.
  virtual bool checkPortAvailability(const records::BootableDevice& device, const std::string& portName);

  /// Sends the request. True if it was sent; what the device makes of it shows on the bus.
  virtual bool requestHalfkayMode(const std::string& portName);

 private:
  bool requestFailed(const std::string& description);

  TerminalNodes& nodes_;
  foundation::Runtime& runtime_;
};

}  // namespace karvex::device

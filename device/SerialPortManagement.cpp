#include "device/SerialPortManagement.hpp"

#include <fmt/format.h>

#include "device/SerialPort.hpp"
#include "foundation/Log.hpp"
#include "records/UsbIds.hpp"

namespace karvex::device {
namespace {

/// What a board takes as the request: 134 baud, 8 data bits, no parity, 1 stop bit.
constexpr SerialPortSettings halfkayRequest{
    .baudRateSetting = BaudRateSetting::bothWays(BaudRate::baud134),
    .minimumBytesToRead = 1,
    .timeout = 0,
    .parityType = ParityType::none,
    .sendTwoStopBits = false,
    .dataBitsSize = DataBitsSize::bits8,
    .useHardwareFlowControl = false,
    .useSoftwareFlowControl = false,
    .processOutput = false,
};

template <typename... Args>
void log(fmt::format_string<Args...> format, Args&&... args) {
  foundation::log::system(fmt::format(format, std::forward<Args>(args)...));
}

}  // namespace

bool SerialPortManagement::checkPortAvailability(const records::BootableDevice& device,
                                                 const std::string& portName) {
  if (device.USBProductId == records::halfKayProductId) {
    log("> KARVEX : Already in Halfkay mode... abort!");
    halfkayModeDetected.set(true);
    return false;
  }
  log("> KARVEX : Checking serial port availablity for port : {}", portName);
  SerialPort port(nodes_, runtime_, portName);
  try {
    port.open(PortMode::receiveAndTransmit);
  } catch (const PortException& error) {
    log("> KARVEX : Error opening or closing serial port {}", error.what());
    portBusyError.set(true);
    errorText.set(error.what());
    showErrorModal.set(true);
    return false;
  }
  log("> KARVEX Serial port opened succesfully");
  port.close();
  return true;
}

bool SerialPortManagement::requestHalfkayMode(const std::string& portName) {
  SerialPort port(nodes_, runtime_, portName);
  port.close();
  log("> KARVEX : Serial port is fully available!");
  log("> KARVEX : Attempting to open serial port {}", portName);
  try {
    port.open(PortMode::receive);
  } catch (const PortException& error) {
    log("> KARVEX : Could not open serial port {} : Reason => {}", portName, error.what());
    return requestFailed(error.what());
  }
  log("> KARVEX : Serial port {} open success!", portName);
  try {
    port.configure(halfkayRequest);
  } catch (const PortException& error) {
    log("> KARVEX : Halfkay mode request failed : Reason : {}", error.what());
    port.close();
    return requestFailed(error.what());
  }
  port.close();
  log("> KARVEX : Halfkay mode request Sent on port {}", portName);
  return true;
}

/// The flag is inverted, not set: whoever shows the failure puts it back.
bool SerialPortManagement::requestFailed(const std::string& description) {
  errorText.set(description);
  showErrorModal.toggle();
  return false;
}

}  // namespace karvex::device

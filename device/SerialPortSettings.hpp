#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

/// What a serial port can be set to: the values that a caller of SerialPort chooses from.
namespace karvex::device {

/// Line speeds. A member's position is its place in every table of speeds.
enum class BaudRate {
  baud0,  ///< hangs up
  baud50,
  baud75,
  baud110,
  baud134,  ///< the one that a Teensy board takes as the request to enter its bootloader
  baud150,
  baud200,
  baud300,
  baud600,
  baud1200,
  baud1800,
  baud2400,
  baud4800,
  baud9600,
  baud19200,
  baud38400,
  baud57600,
  baud115200,
  baud230400,
};

inline constexpr std::size_t baudRateCount = 19;

/// The speed in baud.
constexpr std::uint32_t speedValue(BaudRate rate) {
  constexpr std::array<std::uint32_t, baudRateCount> values = {
      0,    50,   75,   110,  134,   150,   200,   300,    600,    1200,
      1800, 2400, 4800, 9600, 19200, 38400, 57600, 115200, 230400,
  };
  return values.at(static_cast<std::size_t>(rate));
}

/// The speeds of the two directions.
struct BaudRateSetting {
  BaudRate receiveRate = BaudRate::baud9600;
  BaudRate transmitRate = BaudRate::baud9600;

  /// The same speed in both directions.
  static constexpr BaudRateSetting bothWays(BaudRate rate) { return {rate, rate}; }

  bool operator==(const BaudRateSetting&) const = default;
};

enum class DataBitsSize { bits5, bits6, bits7, bits8 };

/// `none` leaves the parity as it is found: it switches off nothing that was on.
enum class ParityType { none, even, odd };

/// The positions are those of O_RDONLY, O_WRONLY and O_RDWR.
enum class PortMode { receive, transmit, receiveAndTransmit };

/// Everything that `configure` sets.
struct SerialPortSettings {
  BaudRateSetting baudRateSetting;
  /// VMIN of POSIX, 0 to 255: a read waits for as many bytes.
  std::int32_t minimumBytesToRead = 1;
  /// VTIME of POSIX, 0 to 255, in tenths of a second: ends a read early; 0 never does.
  std::int32_t timeout = 0;
  ParityType parityType = ParityType::none;
  bool sendTwoStopBits = false;
  DataBitsSize dataBitsSize = DataBitsSize::bits8;
  bool useHardwareFlowControl = false;
  bool useSoftwareFlowControl = false;
  bool processOutput = false;

  bool operator==(const SerialPortSettings&) const = default;
};

}  // namespace karvex::device

#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <variant>

#include "device/SerialPortSettings.hpp"
#include "foundation/run/ReadReadiness.hpp"

namespace karvex::device {

/// From resume() on, calls its handler on the global queue whenever there is something to read or the node
/// has been hung up, one call at a time, until the handler gives ReadOutcome::gone. Destroying it keeps
/// further calls from beginning, and doesn't wait for one that has begun.
class ReadSource {
 public:
  using Handler = std::function<foundation::ReadOutcome()>;

  virtual ~ReadSource() = default;

  /// Harmless a second time. Without effect for a node that never has input.
  virtual void resume() {}
};

/// A terminal device node that this program has open and to itself. Destroying it closes it and gives it
/// free. read(), write() and isConnected() may be called beside each other and beside configure().
///
/// An implementation on virtual time must not sleep in any operation except read(): the others are called
/// under the port's lock, and a thread that waited for that lock would keep time from going on.
class TerminalNode {
 public:
  virtual ~TerminalNode() = default;

  /// Sets the line. What the node refuses stays as it was, without a word.
  virtual void configure(const SerialPortSettings& settings) = 0;

  /// One read, which waits as configured. Gives the number of bytes; 0 or less if there are none.
  virtual std::ptrdiff_t read(std::span<std::uint8_t> into) = 0;

  /// One write. Gives the number of bytes taken, or -1.
  virtual std::ptrdiff_t write(std::span<const std::uint8_t> bytes) = 0;

  /// False once the device has left: its node is no longer in the file system.
  virtual bool isConnected() = 0;

  /// The source that tells of this node's input, once it is resumed. The node must outlive it. Throws
  /// std::system_error if the system lacks the means.
  virtual std::unique_ptr<ReadSource> watch(ReadSource::Handler onReadable) = 0;

  /// From now on, destroying the node leaves it open, and taken, for as long as the program runs.
  virtual void leaveOpen() = 0;
};

/// Why a node could not be had.
struct TerminalRefusal {
  enum class Cause {
    absent,        ///< the path leads to no node
    inUse,         ///< another program, or another part of this one, has it
    notPermitted,  ///< this user may not use it
    other,
  };

  Cause cause = Cause::other;
  /// The node that the path led to ("/dev/ttyACM0"), if that isn't the path itself.
  std::string node;
  /// inUse: who has it ("minicom (process 4711)"), if that could be found out. other: the system's words.
  std::string detail;

  bool operator==(const TerminalRefusal&) const = default;
};

using OpenedTerminal = std::variant<std::unique_ptr<TerminalNode>, TerminalRefusal>;

/// The machine's terminal device nodes. May be used on any thread.
class TerminalNodes {
 public:
  virtual ~TerminalNodes() = default;

  /// Opens a node for this program alone. The path is a port name made by rule (device/PortName.hpp), which
  /// means the serial port of the board with that serial number, or the path of a node. Doesn't wait for
  /// another program to let go of it.
  virtual OpenedTerminal open(const std::string& path, PortMode mode) = 0;
};

}  // namespace karvex::device

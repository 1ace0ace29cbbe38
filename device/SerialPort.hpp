#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "device/SerialPortError.hpp"
#include "device/SerialPortSettings.hpp"
#include "device/platform/TerminalNode.hpp"
#include "foundation/run/AsyncStream.hpp"
#include "foundation/run/Runtime.hpp"

namespace karvex::device {

/// One terminal device node: exclusive open, raw configuration, three streams of what comes in, blocking
/// reads, and writes. The order of use is open, configure, traffic, close; behind close the port may be
/// opened again. Every failure is a PortException.
///
/// All operations may be called on any thread. open, configure, close, each write and the streams' own
/// reading exclude each other; blocking reads exclude nothing, so that a write that waits can't hold them up.
///
/// A port is read through its streams or by blocking reads, not both: they would take the bytes from each
/// other, and the streams' reading, waiting under the lock for a byte that a blocking read has got before it,
/// would hold up the close. So the streams read only from the moment on when one of them is first asked for;
/// what comes in before stays with the node until somebody reads it.
class SerialPort {
 public:
  using Block = std::vector<std::uint8_t>;

  /// A line of the line stream that is no valid UTF-8 comes as this text instead.
  static constexpr std::string_view notTextLine =
      "Error: Non string data. Perhaps you wanted data or bytes output?";
  /// The streams' own reads take at most as many bytes at a time.
  static constexpr std::size_t longestBlock = 1024;
  /// Before a blocking read is repeated that gave nothing, because it is set to wait for nothing or the line
  /// is hung up.
  static constexpr std::chrono::milliseconds pauseBeforeRepeat{10};

  /// A closed port. `nodes` and `runtime` must outlive it, and the runtime its streams too.
  SerialPort(TerminalNodes& nodes, foundation::Runtime& runtime, std::string path);

  /// Ends the streams, but doesn't close the port: without a close() the node stays taken for as long as the
  /// program runs.
  virtual ~SerialPort();
  SerialPort(const SerialPort&) = delete;
  SerialPort& operator=(const SerialPort&) = delete;

  /// A closed port on another path, on the same platform as this one.
  virtual std::unique_ptr<SerialPort> create(std::string path) const;

  /// Takes the node for this program alone, and never waits for another one to let go of it. After a failure
  /// the port is as it was. Fails with invalidPath, instanceAlreadyOpen or failedToOpen.
  virtual void open(PortMode mode);

  /// Sets the line; a setting that the node refuses goes unnoticed. Fails with mustBeOpen.
  virtual void configure(const SerialPortSettings& settings);

  /// Ends the streams behind what has come in so far, and gives the node free. A blocking read that is under
  /// way on another thread holds the node until it returns. Harmless on a closed port.
  virtual void close();

  /// The path given at creation.
  const std::string& path() const { return path_; }

  /// What comes in, in blocks as it came, kept without bound from the first call on. The streams live from
  /// open to close, each has one consumer, and the accessors give the same stream each time. The byte stream
  /// consumes the block stream, and the line stream the byte stream. They fail with mustBeOpen, also on a
  /// port that is open for transmitting only.
  foundation::AsyncStream<Block> readDataStream();
  foundation::AsyncStream<std::uint8_t> readBytesStream();
  /// Lines with their newline; an unterminated last line is dropped.
  foundation::AsyncStream<std::string> readLinesStream();

  /// Blocking reads. They fail with mustBeOpen, and with deviceNotConnected when the device has left.

  /// One read; gives its result, which may be 0 or -1.
  std::ptrdiff_t readBytes(void* address, std::size_t count);
  /// One read of up to `length` bytes; nothing read is an empty block.
  Block readData(std::size_t length);
  /// Reads until `length` bytes have come in. Each step is decoded by itself: the first one that is no valid
  /// UTF-8, be it because a character was cut in two, ends the text before it.
  std::string readString(std::size_t length);
  /// ASCII text up to a terminator, which isn't part of it. Another byte than ASCII fails with
  /// unableToConvertByteToCharacter, even if it is the terminator.
  std::string readUntil(std::uint8_t terminator);
  /// ASCII text up to a newline, which isn't part of it.
  std::string readLine();
  /// Waits for a byte.
  std::uint8_t readByte();

  /// Each is one write and gives its result: the number of bytes that the node took, which may be fewer than
  /// were offered, or -1. They fail with mustBeOpen.
  std::ptrdiff_t writeBytes(const void* address, std::size_t count);
  std::ptrdiff_t writeData(std::span<const std::uint8_t> data);
  /// These fail with stringsMustBeUTF8 before anything else.
  std::ptrdiff_t writeString(std::string_view text);
  std::ptrdiff_t writeCharacter(char32_t character);

 private:
  using BlockProducer = foundation::AsyncStream<Block>::Producer;

  [[noreturn]] void fail(PortError error) const;
  std::shared_ptr<TerminalNode> openNode() const;
  std::shared_ptr<TerminalNode> connectedNode() const;
  foundation::AsyncStream<Block> dataStream();
  foundation::AsyncStream<std::uint8_t> bytesStream();
  void makeDataStream(const std::shared_ptr<TerminalNode>& node);
  void endStreams();

  TerminalNodes& nodes_;
  foundation::Runtime& runtime_;

  const std::string path_;
  std::shared_ptr<TerminalNode> node_;  ///< while open; others hold it only for the length of a read
  std::unique_ptr<ReadSource> pollSource_;
  std::shared_ptr<BlockProducer> blocks_;  ///< the other side of readDataStream_
  std::optional<foundation::AsyncStream<Block>> readDataStream_;
  std::optional<foundation::AsyncStream<std::uint8_t>> readBytesStream_;
  std::optional<foundation::AsyncStream<std::string>> readLinesStream_;
  /// The port's lock. Shared with the read source's handler, which may outlast the port.
  const std::shared_ptr<std::mutex> lock_ = std::make_shared<std::mutex>();
  /// Makes reads and writes of the fields above whole for those that don't take the lock. Never held while
  /// anything waits.
  mutable std::mutex fields_;
};

}  // namespace karvex::device

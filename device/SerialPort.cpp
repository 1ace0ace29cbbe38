#include "device/SerialPort.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cassert>
#include <system_error>
#include <utility>

#include "foundation/run/Task.hpp"
#include "foundation/text/Utf8.hpp"

namespace karvex::device {
namespace {

using foundation::AsyncStream;
using foundation::ReadOutcome;
using foundation::Task;
using Block = SerialPort::Block;

/// The read source's handler. It has the node only while it holds the lock, so that a close() under the same
/// lock closes the node for certain.
ReadOutcome passBlockOn(std::mutex& portLock, const std::weak_ptr<TerminalNode>& port,
                        AsyncStream<Block>::Producer& blocks) {
  const std::lock_guard lock(portLock);
  const auto node = port.lock();
  if (!node) {
    return ReadOutcome::gone;
  }
  std::array<std::uint8_t, SerialPort::longestBlock> buffer{};
  const auto count = node->read(buffer);
  if (count >= 1) {
    blocks.yield(Block(buffer.begin(), buffer.begin() + count));
    return ReadOutcome::data;
  }
  if (node->isConnected()) {
    return ReadOutcome::nothing;
  }
  blocks.finish();
  return ReadOutcome::gone;
}

Task<> passBytesOn(AsyncStream<Block> blocks, AsyncStream<std::uint8_t>::Producer bytes) {
  while (const auto block = co_await blocks.next()) {
    for (const auto byte : *block) {
      bytes.yield(byte);
    }
  }
}

Task<> passLinesOn(AsyncStream<std::uint8_t> bytes, AsyncStream<std::string>::Producer lines) {
  std::string line;
  while (const auto byte = co_await bytes.next()) {
    line += static_cast<char>(*byte);
    if (*byte == '\n') {
      lines.yield(foundation::isUtf8(line) ? line : std::string(SerialPort::notTextLine));
      line.clear();
    }
  }
}

[[maybe_unused]] bool isControlCharacter(std::int32_t value) {
  return value >= 0 && value <= 0xFF;
}

}  // namespace

SerialPort::SerialPort(TerminalNodes& nodes, foundation::Runtime& runtime, std::string path)
    : nodes_(nodes), runtime_(runtime), path_(std::move(path)) {}

SerialPort::~SerialPort() {
  const std::lock_guard lock(*lock_);
  endStreams();
  if (node_) {
    node_->leaveOpen();
  }
}

std::unique_ptr<SerialPort> SerialPort::create(std::string path) const {
  return std::make_unique<SerialPort>(nodes_, runtime_, std::move(path));
}

void SerialPort::open(PortMode mode) {
  const std::lock_guard lock(*lock_);
  if (path_.empty()) {
    fail(PortError::invalidPath);
  }
  if (node_) {
    fail(PortError::instanceAlreadyOpen);
  }
  auto opened = nodes_.open(path_, mode);
  if (const auto* refusal = std::get_if<TerminalRefusal>(&opened)) {
    throw PortException(PortError::failedToOpen, describe(*refusal, path_));
  }
  const std::shared_ptr<TerminalNode> node = std::get<std::unique_ptr<TerminalNode>>(std::move(opened));
  if (mode != PortMode::transmit) {
    makeDataStream(node);
  }
  const std::lock_guard fields(fields_);
  node_ = node;
}

/// Called with the port's lock held.
void SerialPort::makeDataStream(const std::shared_ptr<TerminalNode>& node) {
  auto [stream, producer] = AsyncStream<Block>::make(runtime_.globalQueue());
  auto blocks = std::make_shared<BlockProducer>(std::move(producer));
  auto handler = [lock = lock_, port = std::weak_ptr(node), blocks] {
    return passBlockOn(*lock, port, *blocks);
  };
  std::unique_ptr<ReadSource> source;
  try {
    source = node->watch(std::move(handler));
  } catch (const std::system_error& error) {
    const TerminalRefusal refusal{.detail = error.code().message()};
    throw PortException(PortError::failedToOpen, describe(refusal, path_));
  }
  const std::lock_guard fields(fields_);
  pollSource_ = std::move(source);
  blocks_ = std::move(blocks);
  readDataStream_ = std::move(stream);
}

void SerialPort::configure(const SerialPortSettings& settings) {
  assert(isControlCharacter(settings.minimumBytesToRead) && isControlCharacter(settings.timeout));
  const std::lock_guard lock(*lock_);
  if (!node_) {
    fail(PortError::mustBeOpen);
  }
  node_->configure(settings);
}

void SerialPort::close() {
  const std::lock_guard lock(*lock_);
  endStreams();
  std::shared_ptr<TerminalNode> node;  // Closed behind the fields' lock, because that may wait.
  const std::lock_guard fields(fields_);
  node_.swap(node);
}

/// Called with the port's lock held. It keeps the read source's handler out, so that nothing comes behind the
/// stream's end.
void SerialPort::endStreams() {
  std::unique_ptr<ReadSource>
      source;  // Destroyed behind the fields' lock, because that waits for its thread.
  const std::lock_guard fields(fields_);
  source.swap(pollSource_);
  if (const auto blocks = std::exchange(blocks_, nullptr)) {
    blocks->finish();
  }
  readDataStream_.reset();
  readBytesStream_.reset();
  readLinesStream_.reset();
}

AsyncStream<Block> SerialPort::readDataStream() {
  const std::lock_guard fields(fields_);
  return dataStream();
}

AsyncStream<std::uint8_t> SerialPort::readBytesStream() {
  const std::lock_guard fields(fields_);
  return bytesStream();
}

AsyncStream<std::string> SerialPort::readLinesStream() {
  const std::lock_guard fields(fields_);
  if (!readLinesStream_) {
    auto bytes = bytesStream();
    auto [stream, producer] = AsyncStream<std::string>::make(runtime_.globalQueue());
    spawn(runtime_.globalQueue(), passLinesOn(std::move(bytes), std::move(producer)));
    readLinesStream_ = std::move(stream);
  }
  return *readLinesStream_;
}

/// Called with the fields' lock held.
AsyncStream<Block> SerialPort::dataStream() {
  if (!node_) {
    fail(PortError::mustBeOpen);
  }
  if (!readDataStream_) {
    throw PortException(PortError::mustBeOpen,
                        fmt::format("Serial port {} is open for transmitting only", path_));
  }
  pollSource_->resume();
  return *readDataStream_;
}

/// Called with the fields' lock held.
AsyncStream<std::uint8_t> SerialPort::bytesStream() {
  auto blocks = dataStream();
  if (!readBytesStream_) {
    auto [stream, producer] = AsyncStream<std::uint8_t>::make(runtime_.globalQueue());
    spawn(runtime_.globalQueue(), passBytesOn(std::move(blocks), std::move(producer)));
    readBytesStream_ = std::move(stream);
  }
  return *readBytesStream_;
}

std::ptrdiff_t SerialPort::readBytes(void* address, std::size_t count) {
  return connectedNode()->read({static_cast<std::uint8_t*>(address), count});
}

SerialPort::Block SerialPort::readData(std::size_t length) {
  const auto node = connectedNode();
  Block block(length);
  block.resize(static_cast<std::size_t>(std::max<std::ptrdiff_t>(0, node->read(block))));
  return block;
}

std::string SerialPort::readString(std::size_t length) {
  connectedNode();  // Also for no step at all.
  std::string text;
  while (text.size() < length) {
    const auto block = readData(length - text.size());
    const std::string step(block.begin(), block.end());
    if (!foundation::isUtf8(step)) {
      break;
    }
    if (step.empty()) {
      runtime_.clock().sleepFor(pauseBeforeRepeat);
    }
    text += step;
  }
  return text;
}

std::string SerialPort::readUntil(std::uint8_t terminator) {
  std::string text;
  while (true) {
    const auto byte = readByte();
    if (byte >= 0x80) {
      fail(PortError::unableToConvertByteToCharacter);
    }
    if (byte == terminator) {
      return text;  // ASCII throughout, hence valid UTF-8.
    }
    text += static_cast<char>(byte);
  }
}

std::string SerialPort::readLine() {
  return readUntil('\n');
}

std::uint8_t SerialPort::readByte() {
  std::uint8_t byte = 0;
  while (readBytes(&byte, 1) < 1) {
    runtime_.clock().sleepFor(pauseBeforeRepeat);
  }
  return byte;
}

std::ptrdiff_t SerialPort::writeBytes(const void* address, std::size_t count) {
  return writeData({static_cast<const std::uint8_t*>(address), count});
}

std::ptrdiff_t SerialPort::writeData(std::span<const std::uint8_t> data) {
  const std::lock_guard lock(*lock_);
  if (!node_) {
    fail(PortError::mustBeOpen);
  }
  return node_->write(data);
}

std::ptrdiff_t SerialPort::writeString(std::string_view text) {
  if (!foundation::isUtf8(text)) {
    fail(PortError::stringsMustBeUTF8);
  }
  return writeBytes(text.data(), text.size());
}

std::ptrdiff_t SerialPort::writeCharacter(char32_t character) {
  const auto bytes = foundation::encodeUtf8(character);
  if (!bytes) {
    fail(PortError::stringsMustBeUTF8);
  }
  return writeString(*bytes);
}

void SerialPort::fail(PortError error) const {
  throw PortException(error, describe(error, path_));
}

std::shared_ptr<TerminalNode> SerialPort::openNode() const {
  const std::lock_guard fields(fields_);
  if (!node_) {
    fail(PortError::mustBeOpen);
  }
  return node_;
}

std::shared_ptr<TerminalNode> SerialPort::connectedNode() const {
  auto node = openNode();
  if (!node->isConnected()) {
    fail(PortError::deviceNotConnected);
  }
  return node;
}

}  // namespace karvex::device

#include "MIDIKitIO/platform/engine/ByteSplitter.hpp"

#include <utility>

namespace midikit::io::engine {
namespace {

constexpr std::uint8_t firstStatus = 0x80;
constexpr std::uint8_t firstSystemStatus = 0xF0;
constexpr std::uint8_t sysExStart = 0xF0;
constexpr std::uint8_t sysExEnd = 0xF7;
constexpr std::uint8_t firstRealTime = 0xF8;

/// How many data bytes the message has that begins with this status byte (MIDI 1.0 specification); none for
/// system exclusive, its end, and what is undefined.
std::optional<std::size_t> dataByteCount(std::uint8_t status) {
  switch (status) {
    case 0xF0:
    case 0xF4:
    case 0xF5:
    case 0xF7:
    case 0xF9:
    case 0xFD:
      return std::nullopt;
    case 0xF1:
    case 0xF3:
      return 1;
    case 0xF2:
      return 2;
    default:
      break;
  }
  if (status < firstStatus) {
    return std::nullopt;
  }
  if (status >= firstSystemStatus) {
    return 0;
  }
  const auto kind = status & 0xF0;
  return kind == 0xC0 || kind == 0xD0 ? 1 : 2;
}

}  // namespace

void ByteSplitter::split(std::uint64_t timeStamp, std::span<const std::uint8_t> bytes,
                         std::vector<TimedMessage>& out) {
  for (const std::uint8_t byte : bytes) {
    if (byte >= firstRealTime) {
      if (dataByteCount(byte)) {
        out.push_back({timeStamp, {byte}});
      }
    } else if (byte >= firstStatus) {
      takeStatus(timeStamp, byte, out);
    } else {
      takeData(timeStamp, byte, out);
    }
  }
  message_.clear();
  runningStatus_ = 0;
}

void ByteSplitter::takeStatus(std::uint64_t timeStamp, std::uint8_t status, std::vector<TimedMessage>& out) {
  if (auto ended = std::exchange(sysEx_, std::nullopt)) {
    ended->push_back(sysExEnd);
    out.push_back({timeStamp, std::move(*ended)});
  }
  message_.clear();
  runningStatus_ = status < firstSystemStatus ? status : 0;
  if (status == sysExStart) {
    sysEx_.emplace(1, sysExStart);
    return;
  }
  const auto expected = dataByteCount(status);
  if (expected == 0U) {
    out.push_back({timeStamp, {status}});
  } else if (expected) {
    message_.assign(1, status);
  }
}

void ByteSplitter::takeData(std::uint64_t timeStamp, std::uint8_t byte, std::vector<TimedMessage>& out) {
  if (sysEx_) {
    sysEx_->push_back(byte);
    if (sysEx_->size() >= longestSysEx) {
      sysEx_.reset();
    }
    return;
  }
  if (message_.empty()) {
    if (runningStatus_ == 0) {
      return;
    }
    message_.assign(1, runningStatus_);
  }
  message_.push_back(byte);
  if (message_.size() == 1 + dataByteCount(message_.front()).value_or(0)) {
    out.push_back({timeStamp, std::exchange(message_, {})});
  }
}

}  // namespace midikit::io::engine

#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace midikit::io::engine {

/// One MIDI 1.0 message, system exclusive ones whole from F0 to F7.
struct TimedMessage {
  std::uint64_t timeStamp = 0;
  std::vector<std::uint8_t> bytes;
};

/// Takes MIDI 1.0 bytes apart into messages. A system exclusive message may go over any number of calls and
/// ends with any status byte but a real-time one; other messages, and running status, end with the call.
/// Real-time messages inside others come out first. What is no part of a message is dropped.
class ByteSplitter {
 public:
  /// Longer system exclusive messages are dropped, so that one without an end can't fill the memory.
  static constexpr std::size_t longestSysEx = std::size_t{1} << 20U;

  void split(std::uint64_t timeStamp, std::span<const std::uint8_t> bytes, std::vector<TimedMessage>& out);

  /// No message is under way.
  bool isIdle() const { return !sysEx_; }

 private:
  void takeStatus(std::uint64_t timeStamp, std::uint8_t status, std::vector<TimedMessage>& out);
  void takeData(std::uint64_t timeStamp, std::uint8_t byte, std::vector<TimedMessage>& out);

  std::optional<std::vector<std::uint8_t>> sysEx_;  ///< from F0 on
  std::vector<std::uint8_t> message_;
  std::uint8_t runningStatus_ = 0;  ///< 0 for none
};

}  // namespace midikit::io::engine

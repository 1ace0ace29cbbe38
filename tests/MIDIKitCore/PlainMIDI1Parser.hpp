#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "MIDIKitCore/MIDI1Parser.hpp"

namespace midikit::core {

/// The byte-stream rules one by one, byte by byte, without regard to speed: what MIDI1Parser is compared
/// with.
class PlainMIDI1Parser {
 public:
  std::optional<std::uint8_t> runningStatus;
  bool translate = true;

  std::vector<MIDIEvent> parsedEvents(std::span<const std::uint8_t> bytes, UInt4 group = {}) {
    group_ = group;
    current_.clear();
    events_.clear();
    expected_ = expectedAfter(runningStatus.value_or(0));
    for (const auto byte : bytes) {
      take(byte);
    }
    finish();
    return events_;
  }

 private:
  static constexpr int openEnded = 100;

  /// Data bytes of a channel voice status.
  static int expectedAfter(std::uint8_t status) {
    const int high = status >> 4;
    if (high < 0x8 || high == 0xF) {
      return 0;
    }
    return high == 0xC || high == 0xD ? 1 : 2;
  }

  void take(std::uint8_t byte) {
    if (byte < 0x80) {
      takeData(byte);
    } else if (byte >= 0xF8) {
      emit({&byte, 1});
    } else {
      finish();
      begin(byte);
    }
  }

  void takeData(std::uint8_t byte) {
    if (current_.empty() && runningStatus) {
      current_.push_back(*runningStatus);
    }
    if (expected_ == 0) {
      return;
    }
    current_.push_back(byte);
    if (current_.size() == static_cast<std::size_t>(expected_) + 1 && expected_ != openEnded) {
      finish();
    }
  }

  void begin(std::uint8_t status) {
    runningStatus = status < 0xF0 ? std::optional(status) : std::nullopt;
    constexpr std::array<int, 8> systemBytes{openEnded, 1, 2, 1, 0, 0, 0, 0};
    expected_ = status < 0xF0 ? expectedAfter(status) : systemBytes[status & 7];
    current_.clear();
    if (status != 0xF4 && status != 0xF5) {
      current_.push_back(status);
    }
  }

  void finish() {
    emit(current_);
    current_.clear();
  }

  void emit(std::span<const std::uint8_t> message) {
    if (auto event = MIDI1Parser::parsedEvent(message, translate, group_)) {
      events_.push_back(*event);
    }
  }

  UInt4 group_;
  int expected_ = 0;
  std::vector<std::uint8_t> current_;
  std::vector<MIDIEvent> events_;
};

}  // namespace midikit::core

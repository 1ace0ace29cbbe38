#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

#include "MIDIKitCore/wire/MIDI1Status.hpp"

namespace midikit::io::engine {

/// Takes MIDI 1.0 bytes apart into messages. A system exclusive message may go over any number of calls and
/// ends with any status byte but a real-time one; other messages, and running status, end with the call.
/// Real-time messages inside others come out first. What is no part of a message is dropped. Only a system
/// exclusive message takes memory, which serves for the next one. Not locked.
class ByteSplitter {
 public:
  /// Longer system exclusive messages are dropped, so that one without an end can't fill the memory.
  static constexpr std::size_t longestSysEx = std::size_t{1} << 20U;
  /// So much memory is kept between two of them.
  static constexpr std::size_t keptSysEx = std::size_t{1} << 12U;

  /// Calls `sink` with the bytes of each message, system exclusive ones whole from F0 to F7. They are valid
  /// during the call alone.
  template <typename Sink>
  void split(std::span<const std::uint8_t> bytes, const Sink& sink) {
    for (const std::uint8_t byte : bytes) {
      if (byte >= core::firstRealTimeStatus) {
        if (core::isMIDI1Message(byte)) {
          sink(std::span(&byte, 1));
        }
      } else if (byte >= core::firstStatus) {
        takeStatus(byte, sink);
      } else {
        takeData(byte, sink);
      }
    }
    size_ = 0;
    runningStatus_ = 0;
  }

  /// No message is under way.
  bool isIdle() const { return sysEx_.empty(); }

 private:
  template <typename Sink>
  void takeStatus(std::uint8_t status, const Sink& sink) {
    if (!sysEx_.empty()) {
      sysEx_.push_back(core::sysExEndStatus);
      sink(std::span<const std::uint8_t>(sysEx_));
      endSysEx();
    }
    size_ = 0;
    runningStatus_ = status < core::firstSystemStatus ? status : 0;
    if (status == core::sysExStatus) {
      sysEx_.push_back(status);
    } else if (core::isMIDI1Message(status)) {
      add(status, sink);
    }
  }

  template <typename Sink>
  void takeData(std::uint8_t byte, const Sink& sink) {
    if (!sysEx_.empty()) {
      sysEx_.push_back(byte);
      if (sysEx_.size() >= longestSysEx) {
        endSysEx();
      }
      return;
    }
    if (size_ == 0) {
      if (runningStatus_ == 0) {
        return;
      }
      message_[size_++] = runningStatus_;
    }
    add(byte, sink);
  }

  /// A byte of a message other than a system exclusive one.
  template <typename Sink>
  void add(std::uint8_t byte, const Sink& sink) {
    message_[size_++] = byte;
    if (size_ == core::midi1MessageSize(message_.front())) {
      sink(std::span<const std::uint8_t>(message_).first(std::exchange(size_, 0)));
    }
  }

  void endSysEx() {
    sysEx_.clear();
    if (sysEx_.capacity() > keptSysEx) {
      sysEx_.shrink_to_fit();
    }
  }

  std::vector<std::uint8_t> sysEx_;        ///< from F0 on; empty for none
  std::array<std::uint8_t, 3> message_{};  ///< what there is of another one
  std::size_t size_ = 0;                   ///< its bytes so far
  std::uint8_t runningStatus_ = 0;         ///< 0 for none
};

}  // namespace midikit::io::engine

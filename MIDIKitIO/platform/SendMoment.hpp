#pragma once

#include <cstdint>
#include <optional>
#include <utility>

#include "MIDIKitIO/platform/MIDIService.hpp"

namespace midikit::io {

/// The moment of a send, for as long as the send is under way on this thread: a service that wants to know
/// the time meanwhile needn't read its clock again, which is a good portion of a short send. Sends may be
/// nested.
class SendMoment {
 public:
  explicit SendMoment(const MIDIService& service)
      : timeStamp_(service.machAbsoluteTime()), outer_(std::exchange(innermost, this)) {}
  ~SendMoment() { innermost = outer_; }
  SendMoment(const SendMoment&) = delete;
  SendMoment& operator=(const SendMoment&) = delete;

  /// In units of MIDIService::machAbsoluteTime.
  std::uint64_t timeStamp() const { return timeStamp_; }

  /// The time stamp of this thread's innermost send; none outside of one.
  static std::optional<std::uint64_t> current() {
    return innermost != nullptr ? std::optional(innermost->timeStamp_) : std::nullopt;
  }

 private:
  static inline constinit thread_local const SendMoment* innermost = nullptr;

  std::uint64_t timeStamp_;
  const SendMoment* outer_;
};

}  // namespace midikit::io

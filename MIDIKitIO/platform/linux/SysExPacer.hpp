#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>

#include "foundation/run/Clock.hpp"

namespace midikit::io::alsa {

/// When the next piece may go to a driver that drops what its buffer has no room for, as the kernel's do.
/// Pure: it is told the time.
class SysExPacer {
 public:
  /// In bytes: so much may be on its way at once. Half of what the kernel's MIDI ports buffer.
  static constexpr std::int64_t allowance = 2048;

  using TimePoint = karvex::foundation::TimePoint;
  using Duration = karvex::foundation::Duration;

  /// The moment for a piece of `bytes` that is wanted at `wanted`, while the device takes `bytesPerSecond`
  /// (at least 1). Never before the moment of the piece before it, so nothing overtakes.
  TimePoint next(TimePoint wanted, std::int64_t bytes, std::int64_t bytesPerSecond) {
    const auto timeFor = [bytesPerSecond](std::int64_t count) {
      return Duration(count * std::nano::den / std::max<std::int64_t>(bytesPerSecond, 1));
    };
    const auto due = std::max({wanted, last_, drained_ - timeFor(allowance - bytes)});
    drained_ = std::max(drained_, due) + timeFor(bytes);
    last_ = due;
    return due;
  }

 private:
  TimePoint last_{};
  TimePoint drained_{};  ///< when the device has taken all that was sent
};

}  // namespace midikit::io::alsa

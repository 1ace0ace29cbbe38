#pragma once

#include <compare>
#include <cstdint>

namespace midikit::internals {

/// A span of time, or a moment on the processor's raw monotonic clock. The nanoseconds are always 0 ...
/// 999999999, so that a negative span has negative seconds: -0.25 s are -1 s and 750000000 ns. A plain value.
struct Timespec {
  static constexpr std::int64_t nanosecondsPerSecond = 1'000'000'000;

  std::int64_t seconds = 0;
  std::int64_t nanoseconds = 0;

  /// The present moment on Linux's CLOCK_MONOTONIC_RAW, clock number 4, which nobody sets and which nothing
  /// slews. Stops the program if the system has no such clock. Any thread. What has to follow virtual time
  /// asks a foundation Clock instead.
  static Timespec now();

  /// A count of seconds, cut off after the nanosecond. Stops the program unless its nanoseconds fit in 64
  /// bits, as those of 292 years do.
  static Timespec fromSeconds(double seconds);

  constexpr auto operator<=>(const Timespec&) const = default;

  friend constexpr Timespec operator+(Timespec a, Timespec b) {
    return normalised(a.seconds + b.seconds, a.nanoseconds + b.nanoseconds);
  }
  friend constexpr Timespec operator-(Timespec a, Timespec b) {
    return normalised(a.seconds - b.seconds, a.nanoseconds - b.nanoseconds);
  }

 private:
  /// Carries or borrows one second at most.
  static constexpr Timespec normalised(std::int64_t seconds, std::int64_t nanoseconds) {
    if (nanoseconds >= nanosecondsPerSecond) {
      return {seconds + 1, nanoseconds - nanosecondsPerSecond};
    }
    if (nanoseconds < 0) {
      return {seconds - 1, nanoseconds + nanosecondsPerSecond};
    }
    return {seconds, nanoseconds};
  }
};

}  // namespace midikit::internals

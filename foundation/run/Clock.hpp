#pragma once

#include <chrono>

namespace karvex::foundation {

/// Every span of time in the program has this type, so that a unit is never a matter of memory.
using Duration = std::chrono::nanoseconds;

/// A point on a clock that only runs forward. Its origin means nothing; only differences do.
using TimePoint = std::chrono::time_point<std::chrono::steady_clock, Duration>;

/// The one source of "now" and of plain sleeps. Nothing in the program asks the system for either, so that a
/// test or the simulated rig can put a virtual clock in its place. All operations may be called on any
/// thread.
class Clock {
 public:
  virtual ~Clock() = default;

  /// The present moment. Never goes back.
  virtual TimePoint now() const = 0;

  /// Blocks the calling thread until `deadline`; returns at once if it has passed.
  virtual void sleepUntil(TimePoint deadline) = 0;

  /// Blocks the calling thread for `span`; a span of 0 or less returns at once.
  void sleepFor(Duration span) { sleepUntil(now() + span); }
};

}  // namespace karvex::foundation

#pragma once

#include <memory>

#include "foundation/run/Clock.hpp"
#include "foundation/run/Queue.hpp"

namespace karvex::foundation {

/// Calls a handler on a queue, once or again and again. A repeating timer keeps its rhythm: while its queue
/// is blocked, the calls that fall due are left out rather than made up for, and the next one comes at a
/// multiple of the interval after the start. Destroying the timer on its (serial) queue ends it for certain;
/// from another thread, a call that has begun still runs to its end.
class Timer {
 public:
  /// One call, `delay` from now.
  static Timer oneShot(Clock& clock, Queue& queue, Duration delay, Job handler);

  /// A call every `interval` (at least 1 ns), the first of them one interval from now.
  static Timer repeating(Clock& clock, Queue& queue, Duration interval, Job handler);

  /// A timer that does nothing.
  Timer() = default;
  Timer(Timer&&) noexcept = default;
  Timer& operator=(Timer&&) noexcept = default;

  /// Makes no further call. Harmless on a timer that has ended.
  void cancel() { state_.reset(); }

 private:
  struct State;
  explicit Timer(std::shared_ptr<State> state) : state_(std::move(state)) {}
  static Timer start(Clock& clock, Queue& queue, Duration delay, Duration interval, Job handler);

  std::shared_ptr<State> state_;
};

}  // namespace karvex::foundation

#pragma once

#include <memory>

#include "foundation/run/Clock.hpp"
#include "foundation/run/Queue.hpp"

namespace midikit::internals {

/// Calls a handler on a queue at a steady rate, as long as it runs. It can be started and suspended in any
/// order and any number of times. Its rhythm goes on while it is suspended: what fell due in the meantime
/// makes one call, at the start, and the calls after it keep the old beat. So do calls for which the queue
/// had no time.
///
/// The operations aren't locked and are to be called from one thread at a time, which may be the queue's. The
/// queue must be a serial one; clock and queue must outlive the timer and its last call. A call that has
/// begun when the timer is suspended or goes on another thread runs to its end; no other one follows.
class SafeDispatchTimer {
 public:
  using Duration = karvex::foundation::Duration;
  using Handler = karvex::foundation::Job;

  /// How often: calls per second, or seconds from call to call.
  class Rate {
   public:
    static constexpr Rate hertz(double value) { return {Unit::hertz, value}; }
    static constexpr Rate seconds(double value) { return {Unit::seconds, value}; }

    /// Seconds from call to call, 0.000000001 at least. 0.00001 Hz and what is below, zero and negative
    /// values included, give 99999.99999999999.
    double intervalInSeconds() const;

    constexpr bool operator==(const Rate&) const = default;

   private:
    enum class Unit { hertz, seconds };
    constexpr Rate(Unit unit, double value) : unit_(unit), value_(value) {}

    Unit unit_;
    double value_;
  };

  struct Schedule {
    Rate rate;
    /// By how much the system may delay a call to save power. This timer never does.
    Duration leeway{};
  };

  /// Makes a timer that doesn't run yet. Its first call is due at once.
  SafeDispatchTimer(karvex::foundation::Clock& clock, karvex::foundation::Queue& queue, Schedule schedule,
                    Handler eventHandler);
  ~SafeDispatchTimer();
  SafeDispatchTimer(const SafeDispatchTimer&) = delete;
  SafeDispatchTimer& operator=(const SafeDispatchTimer&) = delete;

  Rate rate() const { return schedule_.rate; }
  Duration leeway() const { return schedule_.leeway; }
  bool running() const { return running_; }

  /// Runs; changes nothing if it does already.
  void start();

  /// Runs with a new rhythm, whose first call is due now (`immediate`) or one interval from now.
  void restart(bool immediate);

  /// Makes no calls until it is started again; changes nothing if it is suspended already.
  void suspend();

  /// Calls `handler` from the next call on; nobody if it is empty.
  void setEventHandler(Handler handler);

 private:
  struct State;

  Schedule schedule_;
  bool running_ = false;
  std::shared_ptr<State> state_;
};

}  // namespace midikit::internals

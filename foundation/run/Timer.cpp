#include "foundation/run/Timer.hpp"

#include <algorithm>
#include <utility>

namespace karvex::foundation {

struct Timer::State : std::enable_shared_from_this<State> {
  State(Clock& itsClock, Queue& itsQueue, TimePoint firstDue, Duration itsInterval, Job itsHandler)
      : clock(itsClock),
        queue(itsQueue),
        due(firstDue),
        interval(itsInterval),
        handler(std::move(itsHandler)) {}

  /// The queue knows the timer only weakly, so a timer that has gone calls nobody.
  void schedule() {
    queue.postAt(due, [weak = weak_from_this()] {
      if (const auto self = weak.lock()) {
        self->fire();
      }
    });
  }

  void fire() {
    handler();
    if (interval == Duration::zero()) {
      return;
    }
    const auto missed = (clock.now() - due) / interval;
    due += interval * (missed + 1);
    schedule();
  }

  Clock& clock;
  Queue& queue;
  TimePoint due;
  Duration interval;
  Job handler;
};

Timer Timer::start(Clock& clock, Queue& queue, Duration delay, Duration interval, Job handler) {
  auto state = std::make_shared<State>(clock, queue, clock.now() + delay, interval, std::move(handler));
  state->schedule();
  return Timer(std::move(state));
}

Timer Timer::oneShot(Clock& clock, Queue& queue, Duration delay, Job handler) {
  return start(clock, queue, delay, Duration::zero(), std::move(handler));
}

Timer Timer::repeating(Clock& clock, Queue& queue, Duration interval, Job handler) {
  const auto kept = std::max(interval, Duration(1));
  return start(clock, queue, kept, kept, std::move(handler));
}

}  // namespace karvex::foundation

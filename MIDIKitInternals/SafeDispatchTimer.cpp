#include "MIDIKitInternals/SafeDispatchTimer.hpp"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <utility>

#include "MIDIKitInternals/ThreadSafeAccess.hpp"

namespace midikit::internals {
namespace {

using karvex::foundation::Clock;
using karvex::foundation::Queue;
using karvex::foundation::TimePoint;

SafeDispatchTimer::Duration intervalOf(SafeDispatchTimer::Rate rate) {
  using Duration = SafeDispatchTimer::Duration;
  // Far enough away to never come, and leaves room for adding it to a moment.
  constexpr Duration never = Duration::max() / 4;
  const std::chrono::duration<double> interval(rate.intervalInSeconds());
  return interval < never ? std::chrono::round<Duration>(interval) : never;
}

}  // namespace

double SafeDispatchTimer::Rate::intervalInSeconds() const {
  constexpr double shortest = 0.000000001;
  constexpr double slowest = 0.00001;
  const double interval = unit_ == Unit::seconds ? value_
                          : value_ <= slowest    ? 99999.99999999999
                                                 : 1 / value_;
  return std::max(interval, shortest);
}

/// What the owner's thread and the queue share. The queue knows it only weakly, so a timer that has gone
/// calls nobody.
struct SafeDispatchTimer::State : std::enable_shared_from_this<State> {
  /// Which stretch between a start and a suspension it is. A call that was asked for in another one doesn't
  /// count.
  using Run = std::uint64_t;

  struct Plan {
    TimePoint due;
    std::shared_ptr<Handler> handler;
    Run run = 0;
  };

  State(Clock& itsClock, Queue& itsQueue, Duration itsInterval)
      : clock(itsClock), queue(itsQueue), interval(itsInterval), plan(Plan{.due = itsClock.now()}) {}

  void beginRun(std::optional<TimePoint> firstDue = std::nullopt) {
    const auto begun = plan.modify([&](Plan& shared) {
      shared.due = firstDue.value_or(shared.due);
      ++shared.run;
      return shared;
    });
    askForCall(begun);
  }

  void endRun() {
    plan.modify([](Plan& shared) { ++shared.run; });
  }

  void askForCall(const Plan& planned) {
    queue.postAt(planned.due, [weak = weak_from_this(), run = planned.run] {
      if (const auto self = weak.lock()) {
        self->call(run);
      }
    });
  }

  /// The next moment is found before the handler runs: what falls due while that is busy makes one more call.
  /// It is asked for afterwards, so that a call never meets the one before it.
  void call(Run run) {
    const auto next = plan.modify([&](Plan& shared) -> std::optional<Plan> {
      if (shared.run != run) {
        return std::nullopt;
      }
      const auto missed = (clock.now() - shared.due) / interval;
      shared.due += interval * (missed + 1);
      return shared;
    });
    if (!next) {
      return;
    }
    if (next->handler) {
      (*next->handler)();
    }
    if (plan.value().run == run) {
      askForCall(*next);
    }
  }

  Clock& clock;
  Queue& queue;
  const Duration interval;
  ThreadSafeAccess<Plan> plan;
};

SafeDispatchTimer::SafeDispatchTimer(Clock& clock, Queue& queue, Schedule schedule, Handler eventHandler)
    : schedule_(schedule), state_(std::make_shared<State>(clock, queue, intervalOf(schedule.rate))) {
  setEventHandler(std::move(eventHandler));
}

SafeDispatchTimer::~SafeDispatchTimer() {
  setEventHandler(nullptr);
  state_->endRun();
}

void SafeDispatchTimer::start() {
  if (!std::exchange(running_, true)) {
    state_->beginRun();
  }
}

void SafeDispatchTimer::restart(bool immediate) {
  const auto now = state_->clock.now();
  running_ = true;
  state_->beginRun(immediate ? now : now + state_->interval);
}

void SafeDispatchTimer::suspend() {
  if (std::exchange(running_, false)) {
    state_->endRun();
  }
}

void SafeDispatchTimer::setEventHandler(Handler handler) {
  auto next = handler ? std::make_shared<Handler>(std::move(handler)) : nullptr;
  state_->plan.modify([&next](State::Plan& shared) { shared.handler.swap(next); });
}

}  // namespace midikit::internals

#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

#include "MIDIKitCore/events/ParameterNumberEvents.hpp"
#include "foundation/run/Clock.hpp"
#include "foundation/run/Queue.hpp"
#include "foundation/run/Timer.hpp"

namespace midikit::core {

/// Holds one RPN or NRPN event back whose data entry has no least significant byte, or one of 0, because that
/// byte may follow in an event of its own. Whichever comes first, the next event or the time-out, decides
/// what becomes of it.
///
/// `Source` tells where an event came from and is handed on as it is. Not thread-safe: belongs to the serial
/// queue on which its timer fires. Destroying it drops what it holds, without a call.
template <MIDIParameterNumberEvent Event, typename Source>
class EventHolder {
 public:
  struct Held {
    Event event;
    /// Of the packet that brought the event, in the units of its sender.
    std::uint64_t timestamp;
    Source source;
  };

  /// Called on the queue with an event for which nothing came in time.
  using TimerExpired = std::function<void(const Held&)>;

  enum class Verdict {
    /// The event passes on.
    keep,
    /// The event is held.
    remove,
  };

  struct Decision {
    Verdict verdict;
    /// An event that was held and goes out ahead.
    std::optional<Event> ahead;
  };

  EventHolder(karvex::foundation::Clock& clock, karvex::foundation::Queue& queue, TimerExpired timerExpired)
      : clock_(clock), queue_(queue), state_(std::make_shared<State>(std::move(timerExpired))) {}

  /// What becomes of an event. It supersedes the one that is held if it brings the missing byte for the same
  /// parameter and the same most significant byte; channel and group aren't compared.
  Decision decide(const Held& candidate) {
    const auto lsb = candidate.event.parameter.dataEntryLSB().value_or(UInt7());
    const bool bringsLSB = lsb != UInt7();
    if (const auto stored = flush()) {
      const bool completes = bringsLSB && isSameEntry(*stored, candidate.event);
      return {.verdict = Verdict::keep, .ahead = completes ? std::nullopt : stored};
    }
    if (bringsLSB) {
      return {.verdict = Verdict::keep, .ahead = std::nullopt};
    }
    hold(candidate);
    return {.verdict = Verdict::remove, .ahead = std::nullopt};
  }

  /// Takes out what is held and stops the time.
  std::optional<Event> flush() {
    timer_.cancel();
    auto stored = std::exchange(state_->stored, std::nullopt);
    return stored ? std::optional(std::move(stored->event)) : std::nullopt;
  }

 private:
  /// How long an event is held: longer than the two halves of one entry lie apart, too short to be heard.
  static constexpr karvex::foundation::Duration timeOut = std::chrono::milliseconds(50);

  /// What the timer needs. It lives for the length of a call, even if another thread destroys the holder
  /// meanwhile.
  struct State {
    explicit State(TimerExpired handler) : timerExpired(std::move(handler)) {}

    TimerExpired timerExpired;
    std::optional<Held> stored;
  };

  static bool isSameEntry(const Event& a, const Event& b) {
    return a.parameter.parameterNumber() == b.parameter.parameterNumber() &&
           a.parameter.dataEntryMSB() == b.parameter.dataEntryMSB();
  }

  void hold(const Held& candidate) {
    state_->stored.emplace(candidate);
    timer_ = karvex::foundation::Timer::oneShot(clock_, queue_, timeOut, [weak = std::weak_ptr(state_)] {
      const auto state = weak.lock();
      if (!state) {
        return;
      }
      if (const auto held = std::exchange(state->stored, std::nullopt)) {
        state->timerExpired(*held);
      }
    });
  }

  karvex::foundation::Clock& clock_;
  karvex::foundation::Queue& queue_;
  std::shared_ptr<State> state_;
  karvex::foundation::Timer timer_;
};

}  // namespace midikit::core

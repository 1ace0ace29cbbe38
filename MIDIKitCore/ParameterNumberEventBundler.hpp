#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <iterator>
#include <span>
#include <utility>
#include <vector>

#include "MIDIKitCore/MIDIEvent.hpp"
#include "MIDIKitCore/detail/EventHolder.hpp"

namespace midikit::core {

/// Repairs a stream in which the two bytes of an RPN's or NRPN's data entry arrive as two events, a moment
/// apart: only the complete one passes on. The price is that an RPN or NRPN whose data entry ends in 0 waits
/// until another event comes, or for 50 ms; unless another of its kind is held when it arrives, behind which
/// it passes on at once.
///
/// `Source` tells where events came from and is handed on as it is. Not thread-safe: process() is called on
/// the serial queue that the constructor takes, and so is the handler. An event that is held when the bundler
/// goes is lost.
template <typename Source>
class ParameterNumberEventBundler {
 public:
  /// Takes events that belong together, the timestamp of their packet and its source.
  using HandleEvents = std::function<void(std::span<const MIDIEvent>, std::uint64_t, const Source&)>;

  /// `handleEvents` gets the events that were held in vain. It's copied, once for each kind of parameter.
  ParameterNumberEventBundler(karvex::foundation::Clock& clock, karvex::foundation::Queue& queue,
                              const HandleEvents& handleEvents)
      : rpnHolder_(clock, queue, handlerOf<RPN>(handleEvents)),
        nrpnHolder_(clock, queue, handlerOf<NRPN>(handleEvents)) {}

  /// Rewrites the events of one packet: takes out what is to wait, and puts what has waited ahead of all of
  /// them.
  void process(std::vector<MIDIEvent>& events, std::uint64_t timestamp, const Source& source) {
    std::vector<MIDIEvent> ahead;
    std::size_t kept = 0;
    for (std::size_t i = 0; i < events.size(); ++i) {
      if (!passes(events[i], timestamp, source, ahead)) {
        continue;
      }
      if (kept != i) {
        events[kept] = std::move(events[i]);
      }
      ++kept;
    }
    events.erase(events.begin() + static_cast<std::ptrdiff_t>(kept), events.end());
    events.insert(events.begin(), std::move_iterator(ahead.begin()), std::move_iterator(ahead.end()));
  }

 private:
  template <typename Event>
  static auto handlerOf(const HandleEvents& handleEvents) {
    return [handleEvents](const typename EventHolder<Event, Source>::Held& held) {
      const MIDIEvent event(held.event);
      handleEvents(std::span(&event, 1), held.timestamp, held.source);
    };
  }

  /// Decides about one event. What must go ahead of the packet is put behind what `ahead` holds.
  bool passes(const MIDIEvent& event, std::uint64_t timestamp, const Source& source,
              std::vector<MIDIEvent>& ahead) {
    const auto* const rpn = event.as<RPN>();
    const auto* const nrpn = event.as<NRPN>();
    if (rpn == nullptr) {
      flush(rpnHolder_, ahead);
    }
    if (nrpn == nullptr) {
      flush(nrpnHolder_, ahead);
    }
    if (rpn != nullptr) {
      return passes(rpnHolder_, *rpn, timestamp, source, ahead);
    }
    return nrpn == nullptr || passes(nrpnHolder_, *nrpn, timestamp, source, ahead);
  }

  template <typename Event>
  static bool passes(EventHolder<Event, Source>& holder, const Event& event, std::uint64_t timestamp,
                     const Source& source, std::vector<MIDIEvent>& ahead) {
    const auto decision = holder.decide({.event = event, .timestamp = timestamp, .source = source});
    if (decision.ahead) {
      ahead.emplace_back(*decision.ahead);
    }
    return decision.verdict == EventHolder<Event, Source>::Verdict::keep;
  }

  template <typename Event>
  static void flush(EventHolder<Event, Source>& holder, std::vector<MIDIEvent>& ahead) {
    if (const auto stored = holder.flush()) {
      ahead.emplace_back(*stored);
    }
  }

  EventHolder<RPN, Source> rpnHolder_;
  EventHolder<NRPN, Source> nrpnHolder_;
};

}  // namespace midikit::core

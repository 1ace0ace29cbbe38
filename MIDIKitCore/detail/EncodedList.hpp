#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>
#include <vector>

#include "MIDIKitCore/MIDIEvent.hpp"

namespace midikit::core::detail {

/// Encodes events behind what `into` holds, by way of a small buffer, since a vector is slow to grow unit by
/// unit.
///
/// `write` writes an event to where it's told and gives where that ends, or null for a system exclusive one,
/// which `appendSysEx` then puts into the list itself. It may use `longest` units for each event, and as many
/// as `spill` more that don't count.
template <std::size_t longest, std::size_t spill, class Unit, class Write, class AppendSysEx>
void appendEncoded(std::span<const MIDIEvent> events, std::vector<Unit>& into, const Write& write,
                   const AppendSysEx& appendSysEx) {
  constexpr std::size_t atOnce = 64;
  std::array<Unit, atOnce * longest + spill> units;
  while (!events.empty()) {
    const MIDIEvent* event = events.data();
    const MIDIEvent* const pause = event + std::min(atOnce, events.size());
    Unit* end = units.data();
    Unit* next = end;
    for (; event != pause && (next = write(*event, end)) != nullptr; ++event) {
      end = next;
    }
    into.insert(into.end(), units.data(), end);
    if (next == nullptr) {
      appendSysEx(*event++, into);
    }
    events = events.subspan(static_cast<std::size_t>(event - events.data()));
  }
}

}  // namespace midikit::core::detail

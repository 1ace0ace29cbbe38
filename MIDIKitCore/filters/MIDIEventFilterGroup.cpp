#include "MIDIKitCore/filters/MIDIEventFilterGroup.hpp"

#include <algorithm>

namespace midikit::core {

bool MIDIEventFilterGroup::passes(const MIDIEvent& event) const {
  return std::ranges::all_of(filters,
                             [&event](const MIDIEventFilter& filter) { return filter.passes(event); });
}

std::vector<MIDIEvent> MIDIEventFilterGroup::apply(std::span<const MIDIEvent> events) const {
  if (filters.empty()) {
    return {events.begin(), events.end()};
  }
  auto working = filters.front().apply(events);
  for (const MIDIEventFilter& filter : std::span(filters).subspan(1)) {
    working = filter.apply(working);
  }
  return working;
}

}  // namespace midikit::core

std::size_t std::hash<midikit::core::MIDIEventFilterGroup>::operator()(
    const midikit::core::MIDIEventFilterGroup& group) const {
  return midikit::core::hashOf(group.filters);
}

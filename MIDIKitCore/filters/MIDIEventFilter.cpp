#include "MIDIKitCore/filters/MIDIEventFilter.hpp"

namespace midikit::core {

bool MIDIEventFilter::passes(const MIDIEvent& event) const {
  return std::visit([&event](const auto& filter) { return filter.passes(event); }, alternative_);
}

std::vector<MIDIEvent> MIDIEventFilter::apply(std::span<const MIDIEvent> events) const {
  return std::visit([events](const auto& filter) { return filter.apply(events); }, alternative_);
}

}  // namespace midikit::core

std::size_t std::hash<midikit::core::MIDIEventFilter>::operator()(
    const midikit::core::MIDIEventFilter& filter) const {
  const auto& alternative = filter.alternative();
  const auto heldHash = std::visit([](const auto& held) { return held.hash(); }, alternative);
  return midikit::core::hashOf(alternative.index(), heldHash);
}

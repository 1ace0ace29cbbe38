#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <vector>

#include "MIDIKitCore/MIDIEvent.hpp"
#include "MIDIKitCore/filters/MIDIEventFilter.hpp"

namespace midikit::core {

/// A chain of filters: an event passes if it passes all of them. Without filters, every event does. A plain
/// value.
struct MIDIEventFilterGroup {
  std::vector<MIDIEventFilter> filters;

  bool passes(const MIDIEvent& event) const;

  /// What is left when each filter in its order was applied to what the one before had left.
  std::vector<MIDIEvent> apply(std::span<const MIDIEvent> events) const;

  bool operator==(const MIDIEventFilterGroup&) const = default;
};

}  // namespace midikit::core

template <>
struct std::hash<midikit::core::MIDIEventFilterGroup> {
  std::size_t operator()(const midikit::core::MIDIEventFilterGroup& group) const;
};

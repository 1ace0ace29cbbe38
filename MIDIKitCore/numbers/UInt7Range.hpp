#pragma once

#include <cstddef>
#include <functional>

#include "MIDIKitCore/numbers/UInt.hpp"

namespace midikit::core {

/// A closed range, as of note numbers: both bounds belong to it. The caller keeps `lowerBound` at or below
/// `upperBound`; nothing lies in a range the wrong way round.
struct UInt7Range {
  UInt7 lowerBound;
  UInt7 upperBound;

  constexpr bool contains(UInt7 number) const { return number >= lowerBound && number <= upperBound; }

  constexpr bool operator==(const UInt7Range&) const = default;
};

}  // namespace midikit::core

template <>
struct std::hash<midikit::core::UInt7Range> {
  constexpr std::size_t operator()(midikit::core::UInt7Range range) const noexcept {
    return std::size_t{range.lowerBound.value()} << 7U | std::size_t{range.upperBound.value()};
  }
};

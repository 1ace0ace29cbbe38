#pragma once

#include <cstdint>

#include "MIDIKitCore/UInt25.hpp"
#include "MIDIKitCore/UInt7.hpp"

namespace midikit::core {

/// A pitch in semitones with 25 fractional bits: the 32-bit value of the registered per-note controller
/// Pitch 7.25 of the MIDI 2.0 protocol specification.
struct Pitch7_25 {
  UInt7 coarse;  ///< whole semitones: a note number
  UInt25 fine;   ///< 1/33554432 of a semitone

  /// `coarse` is the upper seven bits, `fine` the others.
  static constexpr Pitch7_25 fromEncoded(std::uint32_t word) {
    return {UInt7::unchecked(static_cast<std::uint8_t>(word >> 25)), UInt25::unchecked(word & 0x1FFFFFF)};
  }

  constexpr std::uint32_t encoded() const { return std::uint32_t{coarse.value()} << 25 | fine.value(); }

  friend constexpr bool operator==(const Pitch7_25&, const Pitch7_25&) = default;
};

}  // namespace midikit::core

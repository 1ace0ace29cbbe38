#pragma once

#include <cstdint>
#include <string>

#include "MIDIKitCore/numbers/UInt.hpp"

namespace midikit::core {

/// A pitch in semitones with nine fractional bits: Pitch 7.9 of the MIDI 2.0 protocol specification.
struct Pitch7_9 {
  UInt7 coarse;  ///< whole semitones: a note number
  UInt9 fine;    ///< 1/512 of a semitone

  /// `coarse` is bits 9 to 15, `fine` bits 0 to 8.
  static constexpr Pitch7_9 fromEncoded(std::uint16_t word) {
    return {UInt7::unchecked(static_cast<std::uint8_t>(word >> 9)),
            UInt9::unchecked(static_cast<std::uint16_t>(word & 0x1FF))};
  }

  /// The bytes of the 16 bits.
  static constexpr Pitch7_9 fromBytePair(BytePair pair) {
    return fromEncoded(static_cast<std::uint16_t>(pair.msb << 8 | pair.lsb));
  }

  /// The nearest pitch from 0.0 to 127 511/512; halves away from zero, not-a-number as 0.0.
  static constexpr Pitch7_9 fromSemitones(double semitones) {
    // All 16 bits at once, so that a fraction that rounds up to a whole semitone becomes one.
    const double steps = semitones * 512.0;
    if (!(steps > 0.0)) {
      return {};
    }
    if (steps >= 65535.0) {
      return fromEncoded(0xFFFF);
    }
    const auto whole = static_cast<std::uint16_t>(steps);
    return fromEncoded(static_cast<std::uint16_t>(steps - whole >= 0.5 ? whole + 1 : whole));
  }

  constexpr std::uint16_t encoded() const {
    return static_cast<std::uint16_t>(coarse.value() << 9 | fine.value());
  }

  constexpr BytePair bytePair() const {
    return {.msb = static_cast<std::uint8_t>(encoded() >> 8),
            .lsb = static_cast<std::uint8_t>(encoded() & 0xFF)};
  }

  constexpr double semitones() const { return encoded() / 512.0; }

  /// "pitch7.9(60, fine: 256)"
  std::string description() const;

  friend constexpr bool operator==(const Pitch7_9&, const Pitch7_9&) = default;
};

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

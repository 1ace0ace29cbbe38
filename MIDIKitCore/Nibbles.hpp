#pragma once

#include <cstdint>

#include "MIDIKitCore/UInt4.hpp"

namespace midikit::core {

/// A byte as two halves of four bits.
struct Nibbles {
  UInt4 high;  ///< bits 4 to 7
  UInt4 low;   ///< bits 0 to 3

  /// Splits a byte.
  static constexpr Nibbles of(std::uint8_t byte) {
    return {.high = UInt4::unchecked(static_cast<std::uint8_t>(byte >> 4U)),
            .low = UInt4::unchecked(static_cast<std::uint8_t>(byte & 0xFU))};
  }

  /// Joins the halves.
  constexpr std::uint8_t byte() const { return static_cast<std::uint8_t>(high.value() << 4U | low.value()); }

  constexpr bool operator==(const Nibbles&) const = default;
};

}  // namespace midikit::core

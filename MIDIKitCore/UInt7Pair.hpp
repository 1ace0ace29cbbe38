#pragma once

#include <compare>
#include <cstddef>
#include <functional>
#include <string>

#include "MIDIKitCore/BytePair.hpp"
#include "MIDIKitCore/DecodingError.hpp"
#include "MIDIKitCore/UInt7.hpp"
#include "MIDIKitInternals/Result.hpp"

namespace midikit::core {

/// The two halves of a 14-bit value as 7-bit integers. Ordered by numeric value.
struct UInt7Pair {
  UInt7 msb;  ///< most significant half, bits 7 to 13
  UInt7 lsb;  ///< least significant half, bits 0 to 6

  constexpr bool operator==(const UInt7Pair&) const = default;
  constexpr std::strong_ordering operator<=>(const UInt7Pair&) const = default;

  /// "[msb: 0x7F, lsb: 0x05]"
  std::string description() const;

  /// The serialised form: the two halves in their storage.
  constexpr BytePair encoded() const { return {.msb = msb.encoded(), .lsb = lsb.encoded()}; }

  /// Reads the serialised form back. Fails as `UInt7` does if a half is above 127.
  static constexpr internals::Result<UInt7Pair, DecodingError> decoded(BytePair encoded) {
    const auto high = UInt7::decoded(encoded.msb);
    const auto low = UInt7::decoded(encoded.lsb);
    if (!high || !low) {
      return high ? low.error() : high.error();
    }
    return UInt7Pair{.msb = *high, .lsb = *low};
  }
};

}  // namespace midikit::core

template <>
struct std::hash<midikit::core::UInt7Pair> {
  std::size_t operator()(midikit::core::UInt7Pair pair) const noexcept {
    return std::hash<midikit::core::BytePair>{}(pair.encoded());
  }
};

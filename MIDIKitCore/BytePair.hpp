#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>

namespace midikit::core {

/// The two halves of a 14-bit value, each in a byte of its own. Ordered by numeric value; serialised as its
/// fields.
struct BytePair {
  std::uint8_t msb = 0;  ///< most significant half, bits 7 to 13
  std::uint8_t lsb = 0;  ///< least significant half, bits 0 to 6

  constexpr bool operator==(const BytePair&) const = default;
  constexpr std::strong_ordering operator<=>(const BytePair&) const = default;
};

}  // namespace midikit::core

template <>
struct std::hash<midikit::core::BytePair> {
  std::size_t operator()(midikit::core::BytePair pair) const noexcept {
    return std::size_t{pair.msb} << 8U | std::size_t{pair.lsb};
  }
};

#pragma once

#include <bit>
#include <cstdint>
#include <limits>
#include <type_traits>

namespace midikit::core {

// Conversions between the widths of channel voice values, and between them and the unit interval (0.0 to 1.0)
// and the bipolar interval (-1.0 to 1.0). Widths are in bits, at most 32; integers travel in 32-bit unsigned
// ones. All are total: a number that is out of its interval counts as the nearest bound, not-a-number as 0.0.

/// The middle of an unsigned range of that width, which is the upper of its two middle values.
template <unsigned width>
constexpr std::uint32_t centreOf = std::uint32_t{1} << (width - 1);

template <unsigned width>
constexpr std::uint32_t maximumOf = centreOf<width> - 1 + centreOf<width>;

/// 2 to the power of the width, beyond what the integer holds.
template <unsigned width>
constexpr double rangeOf = 2.0 * centreOf<width>;

/// `value` within 0.0 to 1.0.
constexpr double clampedToUnitInterval(double value) {
  if (!(value > 0.0)) {
    return 0.0;
  }
  return value > 1.0 ? 1.0 : value;
}

/// `value` within -1.0 to 1.0.
constexpr double clampedToBipolarInterval(double value) {
  if (value != value) {
    return 0.0;
  }
  return value < -1.0 ? -1.0 : value > 1.0 ? 1.0 : value;
}

/// Each half of the interval is scaled by itself, so that 0.5 gives the centre and 1.0 the maximum exactly.
/// Truncates.
template <unsigned width>
constexpr std::uint32_t integerFromUnitInterval(double value) {
  const double x = clampedToUnitInterval(value);
  const bool isUpper = x > 0.5;
  const double scaled = (isUpper ? x - 0.5 : x) * (isUpper ? rangeOf<width> - 2.0 : rangeOf<width>);
  // By way of a signed 64-bit integer, for which processors have an instruction.
  return (isUpper ? centreOf<width> : 0) + static_cast<std::uint32_t>(static_cast<std::int64_t>(scaled));
}

/// The inverse: 0, the centre and the maximum give 0.0, 0.5 and 1.0 exactly.
template <unsigned width>
constexpr double unitIntervalFromInteger(std::uint32_t value) {
  // A little above one half, so that what lies above the centre reads back as what it was.
  constexpr double upperHalf = std::bit_cast<double>(std::uint64_t{0x3FE00000000051EB});
  if (value <= centreOf<width>) {
    return value * (1.0 / rangeOf<width>);
  }
  if (value == maximumOf<width>) {
    return 1.0;
  }
  return (value - centreOf<width>) / (rangeOf<width> - 2.0) + upperHalf;
}

/// Two slopes: 0, the centre and the maximum give -1.0, 0.0 and 1.0 exactly.
template <unsigned width>
constexpr double bipolarIntervalFromInteger(std::uint32_t value) {
  const double distance = static_cast<double>(value) - centreOf<width>;
  return distance > 0.0 ? distance / (centreOf<width> - 1) : distance * (1.0 / centreOf<width>);
}

/// The inverse. Truncates toward the centre.
template <unsigned width>
constexpr std::uint32_t integerFromBipolarInterval(double value) {
  const double x = clampedToBipolarInterval(value);
  if (x > 0.0) {
    return centreOf<width> + static_cast<std::uint32_t>(x * (centreOf<width> - 1));
  }
  return centreOf<width> - static_cast<std::uint32_t>(-x * centreOf<width>);
}

/// Drops the low bits.
template <unsigned from, unsigned to>
constexpr std::uint32_t scaledDown(std::uint32_t value) {
  static_assert(to <= from);
  return value >> (from - to);
}

/// The Min-Center-Max rule of the MIDI 2.0 protocol specification, in its bit-repeat form: above the centre
/// the bits below the top one are repeated in the room that a shift leaves free. Minimum, centre and maximum
/// stay what they are.
template <unsigned from, unsigned to>
constexpr std::uint32_t scaledUp(std::uint32_t value) {
  static_assert(from <= to && to <= 32);
  // Narrow arithmetic where it does, of which a processor can do more at once; everything stands at its upper
  // end.
  using Word = std::conditional_t<(to <= 16), std::uint16_t, std::uint32_t>;
  constexpr unsigned width = std::numeric_limits<Word>::digits;
  constexpr unsigned period = from - 1;
  const auto aligned = static_cast<Word>(value << (width - from));
  const auto isUpper = static_cast<Word>(static_cast<std::make_signed_t<Word>>(aligned) >> (width - 1));
  auto repeated = static_cast<Word>(aligned & isUpper & (centreOf<width> - 1));
  // Once, twice, four times. Not a loop, which compilers see no way to do for several values at once.
  static_assert(8 * period >= to);
  repeated = static_cast<Word>(repeated | repeated >> period);
  if constexpr (2 * period < width) {
    repeated = static_cast<Word>(repeated | repeated >> 2 * period);
  }
  if constexpr (4 * period < width) {
    repeated = static_cast<Word>(repeated | repeated >> 4 * period);
  }
  return static_cast<Word>(aligned | repeated) >> (width - to);
}

}  // namespace midikit::core

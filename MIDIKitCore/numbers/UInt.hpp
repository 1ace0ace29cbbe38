#pragma once

#include <algorithm>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "MIDIKitCore/DecodingError.hpp"
#include "MIDIKitCore/numbers/BoundedInteger.hpp"
#include "MIDIKitInternals/Result.hpp"

namespace midikit::core {

/// 0 to 15: a channel or a group.
class UInt4 : public BoundedInteger<UInt4, 4, std::uint8_t> {
 public:
  static constexpr std::string_view typeName = "UInt4";

  using BoundedInteger::BoundedInteger;
};

namespace literals {

/// `9_u4`, checked by the compiler.
consteval UInt4 operator""_u4(unsigned long long literal) {
  return UInt4(literal);
}

}  // namespace literals

/// 0 to 127: a note number, a controller value, a data byte of System Exclusive.
class UInt7 : public BoundedInteger<UInt7, 7, std::uint8_t> {
 public:
  static constexpr std::string_view typeName = "UInt7";

  using BoundedInteger::BoundedInteger;

  /// The neutral value of a bipolar quantity: 64, the upper of the two middle values.
  static constexpr UInt7 midpoint() { return unchecked(64); }
};

namespace literals {

/// `60_u7`, checked by the compiler.
consteval UInt7 operator""_u7(unsigned long long literal) {
  return UInt7(literal);
}

}  // namespace literals

/// 0 to 511: the fraction of a semitone in a Pitch 7.9 note attribute.
class UInt9 : public BoundedInteger<UInt9, 9, std::uint16_t> {
 public:
  static constexpr std::string_view typeName = "UInt9";

  using BoundedInteger::BoundedInteger;
};

namespace literals {

/// `256_u9`, checked by the compiler.
consteval UInt9 operator""_u9(unsigned long long literal) {
  return UInt9(literal);
}

}  // namespace literals

/// 0 to 33554431: the fraction of a semitone in a Pitch 7.25 value.
class UInt25 : public BoundedInteger<UInt25, 25, std::uint32_t> {
 public:
  static constexpr std::string_view typeName = "UInt25";

  using BoundedInteger::BoundedInteger;

  /// The neutral value of a bipolar quantity: 16777216, the upper of the two middle values.
  static constexpr UInt25 midpoint() { return unchecked(16777216); }
};

namespace literals {

/// `16777216_u25`, checked by the compiler.
consteval UInt25 operator""_u25(unsigned long long literal) {
  return UInt25(literal);
}

}  // namespace literals

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

namespace midikit::core {

/// 0 to 16383: pitch bend, song position. On the wire it is two data bytes of 7 bits each, and it converts to
/// and from such pairs; the pairs keep the most significant half first, whatever the order of the message's
/// bytes.
class UInt14 : public BoundedInteger<UInt14, 14, std::uint16_t> {
 public:
  static constexpr std::string_view typeName = "UInt14";

  using BoundedInteger::BoundedInteger;

  /// 0.
  constexpr UInt14() = default;

  /// Joins the two halves; the high bit of each byte is ignored.
  constexpr explicit UInt14(BytePair pair)
      : UInt14(unchecked(static_cast<std::uint16_t>((pair.msb & 0x7FU) << 7U | (pair.lsb & 0x7FU)))) {}

  /// Joins the two halves.
  constexpr explicit UInt14(UInt7Pair pair) : UInt14(pair.encoded()) {}

  /// The neutral value of a bipolar quantity: 8192, the upper of the two middle values.
  static constexpr UInt14 midpoint() { return unchecked(8192); }

  constexpr BytePair bytePair() const {
    return {.msb = static_cast<std::uint8_t>(value() >> 7U),
            .lsb = static_cast<std::uint8_t>(value() & 0x7FU)};
  }

  constexpr UInt7Pair uint7Pair() const {
    const BytePair halves = bytePair();
    return {.msb = UInt7::unchecked(halves.msb), .lsb = UInt7::unchecked(halves.lsb)};
  }

  /// -1.0 to 1.0 around the midpoint, which is exactly 0.0. The two sides have different slopes, because
  /// there are 8192 steps below the midpoint and 8191 above it: both ends are exact.
  constexpr double bipolarValue() const {
    const int steps = value() - midpoint().value();
    return steps <= 0 ? steps / 8192.0 : steps / 8191.0;
  }

  /// The value of a bipolar quantity, which is clamped to -1.0 to 1.0 first. Steps are cut off toward the
  /// midpoint, not rounded, so what `bipolarValue` gave can come back one step nearer to the midpoint.
  /// Not-a-number gives the midpoint.
  static constexpr UInt14 fromBipolarValue(double bipolar) {
    if (bipolar > 0) {
      return unchecked(static_cast<std::uint16_t>(8192 + static_cast<int>(std::min(bipolar, 1.0) * 8191)));
    }
    if (bipolar < 0) {
      return unchecked(static_cast<std::uint16_t>(8192 - static_cast<int>(-std::max(bipolar, -1.0) * 8192)));
    }
    return midpoint();
  }
};

namespace literals {

/// `8192_u14`, checked by the compiler.
consteval UInt14 operator""_u14(unsigned long long literal) {
  return UInt14(literal);
}

}  // namespace literals

}  // namespace midikit::core

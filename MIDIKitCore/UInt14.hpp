#pragma once

#include <algorithm>
#include <cstdint>
#include <string_view>

#include "MIDIKitCore/BoundedInteger.hpp"
#include "MIDIKitCore/BytePair.hpp"
#include "MIDIKitCore/UInt7.hpp"
#include "MIDIKitCore/UInt7Pair.hpp"

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

#pragma once

#include <cstdint>
#include <string_view>

#include "MIDIKitCore/BoundedInteger.hpp"

namespace midikit::core {

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

}  // namespace midikit::core

#pragma once

#include <cstdint>
#include <string_view>

#include "MIDIKitCore/BoundedInteger.hpp"

namespace midikit::core {

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

}  // namespace midikit::core

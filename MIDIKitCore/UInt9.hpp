#pragma once

#include <cstdint>
#include <string_view>

#include "MIDIKitCore/BoundedInteger.hpp"

namespace midikit::core {

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

}  // namespace midikit::core

#pragma once

#include <cstdint>
#include <string_view>

#include "MIDIKitCore/BoundedInteger.hpp"

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

}  // namespace midikit::core

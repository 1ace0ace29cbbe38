#include "MIDIKitCore/numbers/UInt.hpp"

#include <string_view>

namespace midikit::core {

namespace {

std::string hexadecimal(UInt7 half) {
  static constexpr std::string_view digits = "0123456789ABCDEF";
  return {'0', 'x', digits[half.value() >> 4U], digits[half.value() & 0xFU]};
}

}  // namespace

std::string UInt7Pair::description() const {
  return "[msb: " + hexadecimal(msb) + ", lsb: " + hexadecimal(lsb) + "]";
}

}  // namespace midikit::core

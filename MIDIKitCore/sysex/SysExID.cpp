#include "MIDIKitCore/sysex/SysExID.hpp"

#include <string_view>

namespace midikit::core {

std::string SysExManufacturer::description() const {
  static constexpr std::string_view digits = "0123456789ABCDEF";
  std::string result;
  for (const auto byte : bytes7()) {
    result += result.empty() ? "0x" : " 0x";
    result += digits[byte >> 4];
    result += digits[byte & 0xF];
  }
  return result;
}

std::string SysExID::description() const {
  if (const auto held = manufacturer()) {
    return "manufacturer(" + held->description() + ")";
  }
  return "universal(" + std::string(core::description(*universal())) + ")";
}

}  // namespace midikit::core

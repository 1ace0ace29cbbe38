#include "MIDIKitCore/sysex/SysExID.hpp"

#include "MIDIKitInternals/RadixText.hpp"

namespace midikit::core {

std::string SysExManufacturer::description() const {
  return internals::hexText(bytes7(), {.width = 2, .prefix = true});
}

std::string SysExID::description() const {
  if (const auto held = manufacturer()) {
    return "manufacturer(" + held->description() + ")";
  }
  return "universal(" + std::string(core::description(*universal())) + ")";
}

}  // namespace midikit::core

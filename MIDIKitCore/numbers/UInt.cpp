#include "MIDIKitCore/numbers/UInt.hpp"

#include "MIDIKitInternals/RadixText.hpp"

namespace midikit::core {

std::string UInt7Pair::description() const {
  constexpr internals::RadixStyle style{.width = 2, .prefix = true};
  return "[msb: " + internals::hexText(msb.value(), style) +
         ", lsb: " + internals::hexText(lsb.value(), style) + "]";
}

}  // namespace midikit::core

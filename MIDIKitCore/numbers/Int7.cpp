#include "MIDIKitCore/numbers/Int7.hpp"

namespace midikit::core {

std::string Int7::binaryDescription() const {
  std::string text = "0b";
  for (unsigned bit = bitWidth; bit-- > 0;) {
    text += (bitPattern() >> bit & 1U) != 0 ? '1' : '0';
  }
  return text;
}

}  // namespace midikit::core

#include "MIDIKitCore/numbers/Pitch.hpp"

namespace midikit::core {

std::string Pitch7_9::description() const {
  return "pitch7.9(" + coarse.description() + ", fine: " + fine.description() + ")";
}

}  // namespace midikit::core

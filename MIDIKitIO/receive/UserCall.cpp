#include "MIDIKitIO/receive/UserCall.hpp"

#include <string>

#include "foundation/Log.hpp"

namespace midikit::io::receive {

void logThrown(const char* what) noexcept {
  karvex::foundation::log::debug("A MIDI receiver threw: " + std::string(what));
}

}  // namespace midikit::io::receive

#include <iostream>

#include "MIDIKitCore/MIDIKitCore.hpp"
#include "MIDIKitInternals/Text.hpp"

int main() {
  std::cout << midikit::core::MIDIIOError::osStatus(-10842).what() << '\n'
            << midikit::internals::onlyAlphanumerics("{Karvex!}") << '\n'
            << midikit::core::parseSysEx7Hex("F0 41 01 F7")->debugDescription() << '\n';
}

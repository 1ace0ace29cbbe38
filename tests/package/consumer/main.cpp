#include <iostream>

#include "MIDIKitCore/MIDIIOError.hpp"
#include "MIDIKitInternals/Text.hpp"

int main() {
  std::cout << midikit::core::MIDIIOError::osStatus(-10842).what() << '\n'
            << midikit::internals::onlyAlphanumerics("{Karvex!}") << '\n';
}

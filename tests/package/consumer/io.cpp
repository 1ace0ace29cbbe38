#include "MIDIKitIO/MIDIKitIO.hpp"
#include "MIDIKitIO/platform/linux/AlsaMIDIService.hpp"

// Whether there is a sequencer depends on the machine; that this links depends on the package.
int main(int argc, char**) {
  return argc > 1 && midikit::io::makeAlsaMIDIService == nullptr ? 1 : 0;
}

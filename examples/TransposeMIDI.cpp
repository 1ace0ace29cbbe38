// Transposes the notes of a MIDI 1.0 byte stream. Drops active sensing, and what is on channel 10: it's for
// drums by custom, which have no pitch.
//
// Run: transpose_midi SEMITONES < BYTES > BYTES

#include <iostream>
#include <vector>

#include "MIDIKitCore/MIDI1Parser.hpp"
#include "MIDIKitCore/filters/MIDIEventFilterGroup.hpp"
#include "examples/Bytes.hpp"
#include "examples/Transposition.hpp"

namespace {

using namespace midikit::core;
using namespace midikit::core::literals;

const MIDIEventFilterGroup wanted{{
    MIDIEventFilter::chanVoice(ChanVoiceTypes::dropChannel(9_u4)),
    MIDIEventFilter::sysRealTime(SysRealTimeTypes::dropType(SysRealTimeType::activeSensing)),
}};

}  // namespace

int main(int argc, char** argv) {
  const auto semitones = argc == 2 ? midikit::examples::semitonesOf(argv[1]) : std::nullopt;
  if (!semitones) {
    std::cerr << "usage: transpose_midi SEMITONES\n";
    return 2;
  }
  MIDI1Parser parser;
  auto events = wanted.apply(parser.parsedEvents(midikit::examples::readBytes(std::cin)));
  std::erase_if(events, [&](MIDIEvent& event) { return !midikit::examples::transpose(event, *semitones); });

  std::vector<std::uint8_t> bytes;
  appendMIDI1Bytes(events, bytes);
  midikit::examples::writeBytes(bytes, std::cout);
}

// Transposes the notes of a MIDI 1.0 byte stream. Drops active sensing, and what is on channel 10: it's for
// drums by custom, which have no pitch.
//
// Run: transpose_midi SEMITONES < BYTES > BYTES

#include <charconv>
#include <cstring>
#include <iostream>
#include <optional>
#include <vector>

#include "MIDIKitCore/MIDI1Parser.hpp"
#include "MIDIKitCore/MIDIEventFilterGroup.hpp"
#include "examples/Bytes.hpp"

namespace {

using namespace midikit::core;
using namespace midikit::core::literals;

const MIDIEventFilterGroup wanted{{
    MIDIEventFilter::chanVoice(ChanVoiceTypes::dropChannel(9_u4)),
    MIDIEventFilter::sysRealTime(SysRealTimeTypes::dropType(SysRealTimeType::activeSensing)),
}};

/// Moves the note of an event, if it has one. False if there is no such note.
bool transpose(MIDIEvent& event, int semitones) {
  return event.visit([semitones](auto& record) {
    if constexpr (requires { record.note; }) {
      const auto number = UInt7::exactly(record.note.number.value() + semitones);
      if (!number) {
        return false;
      }
      record.note.number = *number;
    }
    return true;
  });
}

std::optional<int> semitonesOf(const char* text) {
  int semitones = 0;
  const char* const textEnd = text + std::strlen(text);
  const auto [end, error] = std::from_chars(text, textEnd, semitones);
  const bool isUsual = semitones >= -127 && semitones <= 127;
  return error == std::errc() && end == textEnd && isUsual ? std::optional(semitones) : std::nullopt;
}

}  // namespace

int main(int argc, char** argv) {
  const auto semitones = argc == 2 ? semitonesOf(argv[1]) : std::nullopt;
  if (!semitones) {
    std::cerr << "usage: transpose_midi SEMITONES\n";
    return 2;
  }
  MIDI1Parser parser;
  auto events = wanted.apply(parser.parsedEvents(midikit::examples::readBytes(std::cin)));
  std::erase_if(events, [&](MIDIEvent& event) { return !transpose(event, *semitones); });

  std::vector<std::uint8_t> bytes;
  appendMIDI1Bytes(events, bytes);
  midikit::examples::writeBytes(bytes, std::cout);
}

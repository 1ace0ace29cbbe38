// Translates a MIDI 1.0 byte stream to Universal MIDI Packets of the MIDI 2.0 protocol, and back. Packets are
// text: one a line, their words in hexadecimal.
//
// Run: translate_midi to-ump < BYTES > PACKETS
//      translate_midi to-bytes < PACKETS > BYTES

#include <charconv>
#include <iostream>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "MIDIKitCore/MIDI1Parser.hpp"
#include "MIDIKitCore/MIDI2Parser.hpp"
#include "MIDIKitCore/wire/UMPWords.hpp"
#include "MIDIKitInternals/RadixText.hpp"
#include "examples/Bytes.hpp"

namespace {

using namespace midikit::core;

void toPackets() {
  // Whole messages in one packet: a file is one.
  MIDI1Parser parser;
  for (const auto& event : parser.parsedEvents(midikit::examples::readBytes(std::cin))) {
    for (const auto& packet : event.umpWords(MIDIProtocolVersion::midi2_0)) {
      std::cout << midikit::internals::hexText(packet, {.width = 8}) << '\n';
    }
  }
}

std::optional<std::uint32_t> wordOf(std::string_view text) {
  std::uint32_t word = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), word, 16);
  return error == std::errc() && end == text.data() + text.size() ? std::optional(word) : std::nullopt;
}

bool toBytes() {
  // Keeps the pieces of long system exclusive messages from line to line.
  MIDI2Parser parser;
  std::vector<MIDIEvent> events;
  for (std::string line; std::getline(std::cin, line);) {
    std::vector<std::uint32_t> words;
    std::istringstream texts(line);
    for (std::string text; texts >> text;) {
      const auto word = wordOf(text);
      if (!word) {
        std::cerr << "translate_midi: not a word: " << text << '\n';
        return false;
      }
      words.push_back(*word);
    }
    parser.parse(umpBytes(words), events);
  }
  std::vector<std::uint8_t> bytes;
  appendMIDI1Bytes(events, bytes);
  midikit::examples::writeBytes(bytes, std::cout);
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string_view direction = argc == 2 ? argv[1] : "";
  if (direction == "to-ump") {
    toPackets();
    return 0;
  }
  if (direction == "to-bytes") {
    return toBytes() ? 0 : 1;
  }
  std::cerr << "usage: translate_midi to-ump|to-bytes\n";
  return 2;
}

// Feeds the packet parser with packets of any bytes. The first byte of each says how many bytes follow.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <vector>

#include "MIDIKitCore/MIDI2Parser.hpp"
#include "MIDIKitCore/UMPWords.hpp"

namespace {

using namespace midikit::core;

constexpr std::size_t sysExLimit = 64;

/// What came out must go in again as the same event.
bool comesBack(const MIDIEvent& event) {
  MIDI2Parser parser;
  std::vector<MIDIEvent> events;
  // A note-on of a MIDI 1.0 packet becomes another event in a MIDI 2.0 one.
  for (const auto protocol : {MIDIProtocolVersion::midi1_0, MIDIProtocolVersion::midi2_0}) {
    events.clear();
    for (const auto& packet : event.umpWords(protocol)) {
      parser.parse(umpBytes(packet.words()), events);
    }
    if (events.size() == 1 && events[0] == event) {
      return true;
    }
  }
  return false;
}

std::size_t dataSize(const MIDIEvent& event) {
  return event.visit([](const auto& record) -> std::size_t {
    if constexpr (requires { record.data.size(); }) {
      return record.data.size();
    } else {
      return 0;
    }
  });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::span<const std::uint8_t> input(data, size);
  MIDI2Parser parser(sysExLimit);
  while (!input.empty()) {
    const auto length = std::min<std::size_t>(input[0] % 33, input.size() - 1);
    const auto events = parser.parsedEvents(input.subspan(1, length));
    input = input.subspan(1 + length);
    for (const auto& event : events) {
      if (!comesBack(event) || dataSize(event) > sysExLimit) {
        std::abort();
      }
    }
  }
  return 0;
}

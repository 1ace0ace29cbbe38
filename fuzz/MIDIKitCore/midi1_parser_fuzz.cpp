// Feeds the byte-stream parser with packets of any bytes, and compares it with the plain statement of its
// rules. 0xF9, a status that nothing uses, ends a packet.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <span>

#include "tests/MIDIKitCore/PlainMIDI1Parser.hpp"

namespace {

using namespace midikit::core;

bool isReadByTheRules(std::span<const std::uint8_t> packets, bool translate) {
  MIDI1Parser parser;
  PlainMIDI1Parser plain;
  parser.translateNoteOnZeroVelocityToNoteOff = translate;
  plain.translate = translate;
  while (!packets.empty()) {
    const auto end = std::ranges::find(packets, 0xF9);
    const auto packet = packets.first(static_cast<std::size_t>(end - packets.begin()));
    packets = packets.subspan(std::min(packet.size() + 1, packets.size()));
    if (parser.parsedEvents(packet) != plain.parsedEvents(packet) ||
        parser.runningStatus() != plain.runningStatus) {
      return false;
    }
  }
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (!isReadByTheRules({data, size}, true) || !isReadByTheRules({data, size}, false)) {
    std::abort();
  }
  return 0;
}

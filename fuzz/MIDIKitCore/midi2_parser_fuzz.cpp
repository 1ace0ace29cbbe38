// Feeds the packet parser with packets of any bytes. The first byte of each says how many bytes follow. What
// it puts together of system exclusive messages in pieces is compared with a plain model.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <map>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "MIDIKitCore/MIDI2Parser.hpp"
#include "MIDIKitCore/SysExParser.hpp"
#include "MIDIKitCore/wire/UMPWords.hpp"

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

/// Puts system exclusive messages together, with none of the parser's care for time and memory.
class PlainPieces {
 public:
  /// The message that a packet completes, if any.
  std::optional<MIDIEvent> take(std::span<const std::uint8_t> packet) {
    // Timestamps ahead of the message.
    while (packet.size() >= 4 && packet[0] >> 4 == 0 && packet[1] >> 4 == 2) {
      packet = packet.subspan(4);
    }
    const bool is7Bit = packet.size() == 8 && packet[0] >> 4 == 3;
    const bool is8Bit = packet.size() == 16 && packet[0] >> 4 == 5;
    if (!is7Bit && !is8Bit) {
      return std::nullopt;
    }
    const int status = packet[1] >> 4;
    const std::size_t count = packet[1] & 0xF;
    if (status > 3 || count > (is7Bit ? 6 : 14) || count < (is7Bit ? 0 : 1)) {
      return std::nullopt;
    }
    const auto group = UInt4(packet[0] & 0xF);
    const auto piece = packet.subspan(2, count);
    if (status == 0) {
      return eventOf({piece.begin(), piece.end()}, is7Bit, group);
    }
    auto& message = is7Bit ? sevenBit_ : eightBit_[packet[2]];
    if (status == 1) {
      message.assign(piece.begin(), piece.end());
    } else if (!message.empty()) {
      // Of a message of 8-bit bytes, the stream ID is there already.
      message.insert(message.end(), piece.begin() + (is7Bit ? 0 : 1), piece.end());
    }
    if (message.size() > sysExLimit) {
      message.clear();
    }
    return status == 3 ? eventOf(std::exchange(message, {}), is7Bit, group) : std::nullopt;
  }

 private:
  static std::optional<MIDIEvent> eventOf(std::vector<std::uint8_t> message, bool is7Bit, UInt4 group) {
    if (is7Bit) {
      message.insert(message.begin(), 0xF0);
      message.push_back(0xF7);
    }
    auto event = is7Bit ? parseSysEx7(message, group) : parseSysEx8(message, group);
    return event ? std::optional(*std::move(event)) : std::nullopt;
  }

  std::vector<std::uint8_t> sevenBit_;
  std::map<std::uint8_t, std::vector<std::uint8_t>> eightBit_;
};

bool isSameSysEx(const std::vector<MIDIEvent>& events, const std::optional<MIDIEvent>& wanted) {
  const auto found = std::ranges::find_if(events, &MIDIEvent::isSysEx);
  const bool isOne = found != events.end() && std::next(found) == events.end();
  return wanted ? isOne && *found == *wanted : found == events.end();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::span<const std::uint8_t> input(data, size);
  MIDI2Parser parser(sysExLimit);
  PlainPieces plain;
  while (!input.empty()) {
    const auto length = std::min<std::size_t>(input[0] % 33, input.size() - 1);
    const auto packet = input.subspan(1, length);
    const auto events = parser.parsedEvents(packet);
    if (!isSameSysEx(events, plain.take(packet))) {
      std::abort();
    }
    input = input.subspan(1 + length);
    for (const auto& event : events) {
      if (!comesBack(event) || dataSize(event) > sysExLimit) {
        std::abort();
      }
    }
  }
  return 0;
}

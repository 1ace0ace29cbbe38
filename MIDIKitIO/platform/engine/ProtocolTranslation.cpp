#include "MIDIKitIO/platform/engine/ProtocolTranslation.hpp"

#include "MIDIKitCore/MIDI2Parser.hpp"
#include "MIDIKitCore/MIDIEvent.hpp"
#include "MIDIKitCore/UMPWords.hpp"
#include "MIDIKitIO/platform/engine/UmpMessages.hpp"

namespace midikit::io::engine {

namespace {

constexpr std::uint32_t midi1ChannelVoice = 0x2;
constexpr std::uint32_t midi2ChannelVoice = 0x4;

std::vector<core::MIDIEvent> eventsIn(std::span<const std::uint32_t> message) {
  core::MIDI2Parser parser;
  return parser.parsedEvents(core::umpBytes(message));
}

bool isSilentNoteOn(std::uint32_t word) {
  return (word & 0xF0F000FFU) == 0x20900000U;
}

}  // namespace

std::vector<std::uint32_t> translated(std::span<const std::uint32_t> message, io::MIDIProtocolID protocol) {
  const bool toMidi2 = protocol == io::MIDIProtocolID::midi2_0;
  if (messageTypeOf(message.front()) != (toMidi2 ? midi1ChannelVoice : midi2ChannelVoice)) {
    return {message.begin(), message.end()};
  }
  std::vector<std::uint32_t> words(message.begin(), message.end());
  if (isSilentNoteOn(words.front())) {
    words.front() ^= 0x00100000U;  // 0x9 becomes 0x8
  }
  const auto events = eventsIn(words);
  words.clear();
  for (const auto& event : events) {
    event.appendUMPWords(toMidi2 ? core::MIDIProtocolVersion::midi2_0 : core::MIDIProtocolVersion::midi1_0,
                         words);
  }
  // What only MIDI 2.0 has stays in it.
  const bool isInProtocol =
      words.empty() || messageTypeOf(words.front()) == (toMidi2 ? midi2ChannelVoice : midi1ChannelVoice);
  return isInProtocol ? words : std::vector<std::uint32_t>();
}

std::vector<std::uint8_t> translatedToBytes(std::span<const std::uint32_t> message) {
  std::vector<std::uint8_t> bytes;
  for (const auto& event : eventsIn(message)) {
    event.appendMIDI1Bytes(bytes);
  }
  return bytes;
}

}  // namespace midikit::io::engine

#include "MIDIKitIO/platform/engine/ProtocolTranslation.hpp"

#include <array>

#include "MIDIKitCore/wire/MIDIUMPFields.hpp"
#include "MIDIKitCore/wire/UMPWords.hpp"

namespace midikit::io::engine {

namespace {

using core::MIDIUMPMessageType;

bool hasType(std::uint32_t word, MIDIUMPMessageType type) {
  return core::umpMessageType(word) == static_cast<std::uint32_t>(type);
}

bool isSilentNoteOn(std::uint32_t word) {
  return (word & 0xF0F000FFU) == 0x20900000U;
}

}  // namespace

std::span<const std::uint32_t> ProtocolTranslator::toProtocol(std::span<const std::uint32_t> message,
                                                              MIDIProtocolID protocol) {
  const bool toMidi2 = protocol == MIDIProtocolID::midi2_0;
  const auto wanted = toMidi2 ? MIDIUMPMessageType::midi2ChannelVoice : MIDIUMPMessageType::midi1ChannelVoice;
  const auto other = toMidi2 ? MIDIUMPMessageType::midi1ChannelVoice : MIDIUMPMessageType::midi2ChannelVoice;
  if (!hasType(message.front(), other)) {
    return message;
  }
  if (isSilentNoteOn(message.front())) {
    parse(std::array{message.front() ^ 0x00100000U});  // 0x9 becomes 0x8
  } else {
    parse(message);
  }
  words_.clear();
  for (const auto& event : events_) {
    event.appendUMPWords(toMidi2 ? core::MIDIProtocolVersion::midi2_0 : core::MIDIProtocolVersion::midi1_0,
                         words_);
  }
  if (!words_.empty() && !hasType(words_.front(), wanted)) {
    words_.clear();  // What only MIDI 2.0 has stays in it.
  }
  return words_;
}

std::span<const std::uint8_t> ProtocolTranslator::toBytes(std::span<const std::uint32_t> message) {
  parse(message);
  bytes_.clear();
  for (const auto& event : events_) {
    event.appendMIDI1Bytes(bytes_);
  }
  return bytes_;
}

void ProtocolTranslator::parse(std::span<const std::uint32_t> message) {
  events_.clear();
  parser_.parse(message, events_);
}

}  // namespace midikit::io::engine

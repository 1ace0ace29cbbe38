#include "MIDIKitIO/platform/engine/ProtocolTranslation.hpp"

#include <algorithm>
#include <array>
#include <optional>

#include "MIDIKitCore/wire/MIDI1Status.hpp"
#include "MIDIKitCore/wire/MIDIUMPFields.hpp"
#include "MIDIKitCore/wire/UMPWords.hpp"

namespace midikit::io::engine {

namespace {

using core::MIDIUMPMessageType;

bool hasType(std::uint32_t word, MIDIUMPMessageType type) {
  return core::umpMessageType(word) == static_cast<std::uint32_t>(type);
}

/// The message in MIDI 1.0 of a note, a pressure, a control change or a pitch bend of MIDI 2.0, as the event
/// has it that the message makes: its status and data bytes in the lower 24 bits. None for any other message.
std::optional<std::uint32_t> shortMessage(std::span<const std::uint32_t> words) {
  constexpr std::uint32_t typeAndHighBitOfNumber = 0xF0008000U;
  if ((words.front() & typeAndHighBitOfNumber) != 0x40000000U) {
    return std::nullopt;
  }
  const std::uint32_t head = words.front() & 0x00FFFF00U;
  const std::uint32_t value = words[1] >> 25U;
  switch (head >> 20U) {
    case 0x9:  // Velocity 0 would end the note.
      return head | std::max(value, std::uint32_t{1});
    case 0x8:
    case 0xA:
    case 0xB:
      return head | value;
    case 0xD:
      return (head & 0xFF0000U) | value << 8U;
    case 0xE:
      return (head & 0xFF0000U) | (words[1] >> 18U & 0x7FU) << 8U | value;
    default:
      return std::nullopt;
  }
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
  if (const auto bytes = shortMessage(message)) {
    short_ = {static_cast<std::uint8_t>(*bytes >> 16U), static_cast<std::uint8_t>(*bytes >> 8U),
              static_cast<std::uint8_t>(*bytes)};
    return std::span(short_).first(core::midi1MessageSize(short_.front()));
  }
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

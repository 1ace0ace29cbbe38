#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "MIDIKitCore/MIDIUMPFields.hpp"

namespace midikit::io {

/// How many words the message has that begins with this word; 0 for a message type that the layer doesn't
/// read, which ends a packet's messages: those behind it are left alone even where the type's length is
/// known.
constexpr std::size_t universalMessageWords(std::uint32_t firstWord) {
  const auto type =
      core::midiUMPMessageType(core::UInt4::unchecked(static_cast<std::uint8_t>(firstWord >> 28U)));
  if (!type) {
    return 0;
  }
  switch (*type) {
    case core::MIDIUMPMessageType::utility:
    case core::MIDIUMPMessageType::systemRealTimeAndCommon:
    case core::MIDIUMPMessageType::midi1ChannelVoice:
      return 1;
    case core::MIDIUMPMessageType::data64bit:
    case core::MIDIUMPMessageType::midi2ChannelVoice:
      return 2;
    case core::MIDIUMPMessageType::data128bit:
      return 4;
  }
  return 0;
}

/// Calls `visit` with the words of each message from the front, up to one that is cut off or that the layer
/// doesn't read.
template <class Visit>
void forEachUniversalMessage(std::span<const std::uint32_t> words, const Visit& visit) {
  while (!words.empty()) {
    const std::size_t count = universalMessageWords(words.front());
    if (count == 0 || count > words.size()) {
      return;
    }
    visit(words.first(count));
    words = words.subspan(count);
  }
}

}  // namespace midikit::io

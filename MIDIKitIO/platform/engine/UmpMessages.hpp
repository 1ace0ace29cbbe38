#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "MIDIKitIO/platform/MIDIServiceTypes.hpp"

namespace midikit::io::engine {

/// The message type of a message that begins with this word.
constexpr std::uint32_t messageTypeOf(std::uint32_t firstWord) {
  return firstWord >> 28U;
}

/// How many words the message has that begins with this word (Universal MIDI Packet specification, "Message
/// Type allocation").
constexpr std::size_t wordCountOf(std::uint32_t firstWord) {
  constexpr std::array<std::uint8_t, 16> counts = {1, 1, 1, 2, 2, 4, 1, 1, 2, 2, 2, 3, 3, 4, 4, 4};
  return counts[messageTypeOf(firstWord)];
}

/// Calls `visit` with the words of each message in the packet. A message that the packet's end cuts off is
/// left out.
template <typename Visit>
void forEachMessage(const MIDIEventPacket& packet, const Visit& visit) {
  auto rest = std::span(packet.words).first(packet.wordCount);
  while (!rest.empty() && wordCountOf(rest.front()) <= rest.size()) {
    visit(rest.first(wordCountOf(rest.front())));
    rest = rest.subspan(wordCountOf(rest.front()));
  }
}

/// Puts the words of a message behind the others, in the last packet if that has the same time stamp and
/// room.
inline void appendMessage(MIDIEventList& list, std::uint64_t timeStamp,
                          std::span<const std::uint32_t> words) {
  if (list.packets.empty() || list.packets.back().timeStamp != timeStamp ||
      list.packets.back().wordCount + words.size() > list.packets.back().words.size()) {
    list.packets.push_back({.timeStamp = timeStamp});
  }
  for (const std::uint32_t word : words) {
    auto& packet = list.packets.back();
    packet.words.at(packet.wordCount++) = word;
  }
}

}  // namespace midikit::io::engine

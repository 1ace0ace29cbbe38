#pragma once

#include <cstdint>
#include <span>

#include "MIDIKitCore/wire/UMPWords.hpp"
#include "MIDIKitIO/platform/MIDIServiceTypes.hpp"

namespace midikit::io::engine {

/// Calls `visit` with the words of each message in the packet. A message that the packet's end cuts off is
/// left out.
template <typename Visit>
void forEachMessage(const MIDIEventPacket& packet, const Visit& visit) {
  auto rest = wordsOf(packet);
  while (!rest.empty() && core::umpWordCount(rest.front()) <= rest.size()) {
    visit(rest.first(core::umpWordCount(rest.front())));
    rest = rest.subspan(core::umpWordCount(rest.front()));
  }
}

/// Puts the words of a message after the others, in the last packet if that has the same time stamp and room.
/// The first `finished` packets are left as they are: what was in packets of its own stays so, because a
/// message that a reader doesn't know ends its reading of the packet.
inline void appendMessage(MIDIEventList& list, std::uint64_t timeStamp, std::span<const std::uint32_t> words,
                          std::size_t finished = 0) {
  if (list.packets.size() <= finished || list.packets.back().timeStamp != timeStamp ||
      list.packets.back().wordCount + words.size() > list.packets.back().words.size()) {
    list.packets.push_back({.timeStamp = timeStamp});
  }
  for (const std::uint32_t word : words) {
    auto& packet = list.packets.back();
    packet.words.at(packet.wordCount++) = word;
  }
}

/// The same for the words of several messages.
inline void appendMessages(MIDIEventList& list, std::uint64_t timeStamp, std::span<const std::uint32_t> words,
                           std::size_t finished = 0) {
  for (; !words.empty(); words = words.subspan(core::umpWordCount(words.front()))) {
    appendMessage(list, timeStamp, words.first(core::umpWordCount(words.front())), finished);
  }
}

}  // namespace midikit::io::engine

#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "MIDIKitCore/wire/UMPWords.hpp"

namespace midikit::io {

/// How many words the message has that begins with this word; 0 for a message type that the layer doesn't
/// read, which ends a packet's messages: those after it are left alone even where the type's length is
/// known.
constexpr std::size_t universalMessageWords(std::uint32_t firstWord) {
  constexpr std::uint32_t lastTypeRead = 5;
  return core::umpMessageType(firstWord) <= lastTypeRead ? core::umpWordCount(firstWord) : 0;
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

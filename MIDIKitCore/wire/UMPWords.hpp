#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace midikit::core {

// The words of Universal MIDI Packets are sent most significant byte first.

/// The number of the message type of a message that begins with this word: its upper four bits.
constexpr std::uint32_t umpMessageType(std::uint32_t firstWord) {
  return firstWord >> 28U;
}

/// How many words the message has that begins with this word, for each of the 16 message types (Universal
/// MIDI Packet specification, "Message Type allocation").
constexpr std::size_t umpWordCount(std::uint32_t firstWord) {
  constexpr std::array<std::uint8_t, 16> counts = {1, 1, 1, 2, 2, 4, 1, 1, 2, 2, 2, 3, 3, 4, 4, 4};
  return counts[umpMessageType(firstWord)];
}

/// Four bytes, of which `a` is the most significant one.
constexpr std::uint32_t umpWord(std::uint8_t a, std::uint8_t b, std::uint8_t c, std::uint8_t d) {
  return std::uint32_t{a} << 24 | std::uint32_t{b} << 16 | std::uint32_t{c} << 8 | d;
}

/// Two halves.
constexpr std::uint32_t umpWord(std::uint16_t upper, std::uint16_t lower) {
  return std::uint32_t{upper} << 16 | lower;
}

/// Writes the bytes of all the words, in the order in which they are sent, to the beginning of `into`, which
/// has room for them. Returns what was written.
constexpr std::span<const std::uint8_t> writeUMPBytes(std::span<const std::uint32_t> words,
                                                      std::span<std::uint8_t> into) {
  std::size_t size = 0;
  for (const std::uint32_t word : words) {
    for (const unsigned shift : {24U, 16U, 8U, 0U}) {
      into[size++] = static_cast<std::uint8_t>(word >> shift);
    }
  }
  return into.first(size);
}

/// The same, in a list of their own.
inline std::vector<std::uint8_t> umpBytes(std::span<const std::uint32_t> words) {
  std::vector<std::uint8_t> bytes(words.size() * 4);
  writeUMPBytes(words, bytes);
  return bytes;
}

}  // namespace midikit::core

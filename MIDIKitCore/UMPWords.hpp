#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace midikit::core {

// The words of Universal MIDI Packets are sent most significant byte first.

/// Four bytes, of which `a` is the most significant one.
constexpr std::uint32_t umpWord(std::uint8_t a, std::uint8_t b, std::uint8_t c, std::uint8_t d) {
  return std::uint32_t{a} << 24 | std::uint32_t{b} << 16 | std::uint32_t{c} << 8 | d;
}

/// Two halves.
constexpr std::uint32_t umpWord(std::uint16_t upper, std::uint16_t lower) {
  return std::uint32_t{upper} << 16 | lower;
}

/// Writes the bytes of all the words, in the order in which they are sent: four times as many bytes as words.
constexpr void writeUMPBytes(std::span<const std::uint32_t> words, std::uint8_t* into) {
  for (const std::uint32_t word : words) {
    for (const int shift : {24, 16, 8, 0}) {
      *into++ = static_cast<std::uint8_t>(word >> shift);
    }
  }
}

/// The same as a list.
inline std::vector<std::uint8_t> umpBytes(std::span<const std::uint32_t> words) {
  std::vector<std::uint8_t> bytes(words.size() * 4);
  writeUMPBytes(words, bytes.data());
  return bytes;
}

}  // namespace midikit::core

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

/// The bytes of all the words, in the order in which they are sent.
inline std::vector<std::uint8_t> umpBytes(std::span<const std::uint32_t> words) {
  std::vector<std::uint8_t> bytes(words.size() * 4);
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    bytes[i] = static_cast<std::uint8_t>(words[i / 4] >> (24 - i % 4 * 8));
  }
  return bytes;
}

}  // namespace midikit::core

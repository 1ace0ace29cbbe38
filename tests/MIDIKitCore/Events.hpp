#pragma once

#include <cstdint>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include "MIDIKitCore/MIDIEvent.hpp"

namespace midikit::core {

/// What a failed test prints.
inline void PrintTo(const MIDIEvent& event, std::ostream* out) {
  *out << event.debugDescription();
}

using Bytes = std::vector<std::uint8_t>;
using Events = std::vector<MIDIEvent>;

/// The bytes of a text as in "90 3C 40".
inline Bytes bytesOf(const std::string& text) {
  std::istringstream in(text);
  Bytes bytes;
  for (unsigned byte = 0; in >> std::hex >> byte;) {
    bytes.push_back(static_cast<std::uint8_t>(byte));
  }
  return bytes;
}

/// `count` bytes that begin with `first` and go on by steps that visit every 7-bit value.
inline Bytes sevenBitBytes(std::size_t count, std::uint8_t first = 0) {
  Bytes bytes(count);
  for (std::size_t i = 0; i < count; ++i) {
    bytes[i] = static_cast<std::uint8_t>((first + i * 5) % 128);
  }
  return bytes;
}

}  // namespace midikit::core

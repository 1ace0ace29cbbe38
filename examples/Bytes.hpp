#pragma once

#include <cstdint>
#include <istream>
#include <iterator>
#include <ostream>
#include <span>
#include <vector>

namespace midikit::examples {

/// All bytes up to the end of a stream.
inline std::vector<std::uint8_t> readBytes(std::istream& from) {
  const std::vector<char> characters(std::istreambuf_iterator<char>(from), {});
  return {characters.begin(), characters.end()};
}

inline void writeBytes(std::span<const std::uint8_t> bytes, std::ostream& to) {
  for (const auto byte : bytes) {
    to.put(static_cast<char>(byte));
  }
}

}  // namespace midikit::examples

#pragma once

#include <cstdint>
#include <string_view>

namespace midikit::core {

/// Why bytes are no event.
enum class ParseError : std::uint8_t { rawBytesEmpty, malformed, invalidType };

constexpr std::string_view description(ParseError error) {
  switch (error) {
    case ParseError::rawBytesEmpty:
      return "Raw bytes empty.";
    case ParseError::malformed:
      return "Malformed.";
    case ParseError::invalidType:
      return "Invalid type.";
  }
  return {};
}

}  // namespace midikit::core

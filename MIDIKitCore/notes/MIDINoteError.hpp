#pragma once

#include <cstdint>
#include <string_view>

namespace midikit::core {

/// Why there is no note.
enum class MIDINoteError : std::uint8_t { outOfBounds, malformedNoteName };

constexpr std::string_view description(MIDINoteError error) {
  switch (error) {
    case MIDINoteError::outOfBounds:
      return "MIDI note is out of bounds (invalid).";
    case MIDINoteError::malformedNoteName:
      return "An unexpected or malformed note name was encountered.";
  }
  return {};
}

}  // namespace midikit::core

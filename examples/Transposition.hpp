#pragma once

#include <charconv>
#include <cstring>
#include <optional>

#include "MIDIKitCore/MIDIEvent.hpp"

namespace midikit::examples {

/// Moves the note of an event, if it has one. False if there is no such note.
inline bool transpose(core::MIDIEvent& event, int semitones) {
  return event.visit([semitones](auto& record) {
    if constexpr (requires { record.note; }) {
      const auto number = core::UInt7::exactly(record.note.number.value() + semitones);
      if (!number) {
        return false;
      }
      record.note.number = *number;
    }
    return true;
  });
}

/// -127 to 127, from a word of the command line.
inline std::optional<int> semitonesOf(const char* text) {
  int semitones = 0;
  const char* const textEnd = text + std::strlen(text);
  const auto [end, error] = std::from_chars(text, textEnd, semitones);
  const bool isUsual = semitones >= -127 && semitones <= 127;
  return error == std::errc() && end == textEnd && isUsual ? std::optional(semitones) : std::nullopt;
}

}  // namespace midikit::examples

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace midikit::core {

/// The twelve names within an octave. They begin at A, while an octave begins at C.
enum class MIDINoteName : std::uint8_t { A, A_sharp, B, C, C_sharp, D, D_sharp, E, F, F_sharp, G, G_sharp };

/// How a text spells a note that lies between two letters.
struct MIDINoteSpelling {
  bool respellSharpAsFlat = false;  ///< the flat of the letter above instead of the sharp of the letter below
  bool unicodeAccidental = false;   ///< "♯" (U+266F) and "♭" (U+266D) instead of "#" and "b"

  constexpr bool operator==(const MIDINoteSpelling&) const = default;
};

/// Steps above the C that begins the octave, 0 to 11.
constexpr int semitone(MIDINoteName name) {
  return (static_cast<int>(name) + 9) % 12;
}

/// The name of `semitone` steps above the C, 0 to 11.
constexpr MIDINoteName noteName(int semitone) {
  return static_cast<MIDINoteName>((semitone + 3) % 12);
}

constexpr bool isSharp(MIDINoteName name) {
  constexpr unsigned sharpSemitones = 1U << 1U | 1U << 3U | 1U << 6U | 1U << 8U | 1U << 10U;
  return (sharpSemitones >> static_cast<unsigned>(semitone(name)) & 1U) != 0;
}

/// The name without an octave, in UTF-8: "C", "C#", "D♭". A text of static storage.
std::string_view text(MIDINoteName name, MIDINoteSpelling spelling = {});

/// What a text begins with: a letter A to G, capital or small, alone or followed by an accidental of either
/// form. E sharp is F and F flat is E, but B sharp and C flat would change the octave and are no names. Looks
/// at the first two characters alone; a second one that is no accidental makes the text no name.
std::optional<MIDINoteName> noteName(std::string_view text);

/// An accidental in a text: where it stands and how long it is, in bytes of UTF-8.
struct MIDINoteAccidental {
  std::size_t position;
  std::size_t length;
  bool isSharp;
};

/// The first accidental of a text, of either form, if there is one.
std::optional<MIDINoteAccidental> firstAccidental(std::string_view text);

}  // namespace midikit::core

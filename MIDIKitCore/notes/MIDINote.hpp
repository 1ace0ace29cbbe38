#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "MIDIKitCore/notes/MIDINoteError.hpp"
#include "MIDIKitCore/notes/MIDINoteName.hpp"
#include "MIDIKitCore/notes/MIDINoteStyle.hpp"
#include "MIDIKitCore/numbers/UInt.hpp"
#include "MIDIKitInternals/Result.hpp"

namespace midikit::core {

class MIDINoteRange;

/// Concert pitch: the frequency of note 69 in hertz, unless a tuning is given.
inline constexpr double standardTuning = 440.0;

/// The frequency in hertz of a note number (any integer) in equal temperament, where note 69 has `tuning`
/// hertz.
double noteFrequency(int number, double tuning = standardTuning);

/// The note number nearest to a frequency, halves away from zero. Nothing if there is no finite one: for a
/// frequency that is zero, negative or not finite, or a tuning like that.
std::optional<int> nearestNoteNumber(double frequency, double tuning = standardTuning);

/// A note number with the naming convention under which it is read. A plain value of two bytes; any thread.
///
/// Equality and hash cover both fields, the order goes by the number alone: notes of one number in two styles
/// are equivalent in order without being equal.
struct MIDINote {
  using Style = MIDINoteStyle;
  using Name = MIDINoteName;
  using NoteError = MIDINoteError;
  using NoteResult = internals::Result<MIDINote, NoteError>;

  UInt7 number;
  Style style = Style::yamaha;

  /// Note 0.
  constexpr MIDINote() = default;

  /// Not explicit: wherever a note is asked for, its number alone will do.
  constexpr MIDINote(UInt7 noteNumber, Style noteStyle = Style::yamaha)
      : number(noteNumber), style(noteStyle) {}

  /// The note of a number; `outOfBounds` outside 0 to 127.
  static constexpr NoteResult fromNumber(PlainInteger auto number, Style style = Style::yamaha) {
    if (const auto exact = UInt7::exactly(number)) {
      return MIDINote(*exact, style);
    }
    return NoteError::outOfBounds;
  }

  /// The note of a name in an octave as `style` counts it; `outOfBounds` outside notes 0 to 127.
  static constexpr NoteResult fromName(Name name, int octave, Style style = Style::yamaha) {
    if (octave < firstOctave(style) || octave > firstOctave(style) + highestOctave) {
      return NoteError::outOfBounds;
    }
    return fromNumber((octave - firstOctave(style)) * 12 + semitone(name), style);
  }

  /// Reads a text in UTF-8 of a capital letter, at most one accidental of either form, and an octave in
  /// decimal with an optional sign: "C3", "A#-1", "B♭+2". A fault up to the accidental is
  /// `malformedNoteName`, one behind it `outOfBounds`, as is a note outside 0 to 127.
  static NoteResult fromText(std::string_view text, Style style = Style::yamaha);

  /// The note nearest to a frequency in hertz under the tuning of 440 Hz. `outOfBounds` outside notes 0 to
  /// 127, and for a frequency that is zero, negative or not finite.
  static NoteResult fromFrequency(double frequency, Style style = Style::yamaha);

  constexpr Name name() const { return noteName(number.value() % 12); }

  /// The octave as the style counts it.
  constexpr int octave() const { return number.value() / 12 + firstOctave(style); }

  constexpr bool isSharp() const { return core::isSharp(name()); }

  /// Name and octave: "A#3". Respelling leaves the octave alone.
  std::string stringValue(MIDINoteSpelling spelling = {}) const;

  /// `stringValue` with the accidentals of Unicode: "A♯3".
  std::string description() const { return stringValue({.unicodeAccidental = true}); }

  /// "Note(A♯3 number:70)"
  std::string debugDescription() const;

  /// In hertz, where note 69 has `tuning` hertz.
  double frequency(double tuning = standardTuning) const { return noteFrequency(number.value(), tuning); }

  /// The note `steps` above, or below if negative, in the same style. Stays on the first or last note of all.
  constexpr MIDINote advanced(int steps) const {
    return {UInt7::clamping(std::int64_t{number.value()} + steps), style};
  }

  /// Steps from this note to `other`, negative if `other` is the lower one.
  constexpr std::ptrdiff_t distanceTo(MIDINote other) const { return number.distanceTo(other.number); }

  /// Notes 0 to 127. Defined in MIDINoteRange.hpp, as is the next one.
  static constexpr MIDINoteRange allNotes(Style style = Style::yamaha);

  /// Notes 21 to 108, the 88 keys of a piano.
  static constexpr MIDINoteRange pianoKeys(Style style = Style::yamaha);

  constexpr bool operator==(const MIDINote&) const = default;
  friend constexpr std::weak_ordering operator<=>(MIDINote a, MIDINote b) { return a.number <=> b.number; }

 private:
  // Counted from 0. It is incomplete: note 127 is its G.
  static constexpr int highestOctave = 10;
};

}  // namespace midikit::core

/// Hashes both fields.
template <>
struct std::hash<midikit::core::MIDINote> {
  std::size_t operator()(midikit::core::MIDINote note) const noexcept {
    return std::size_t{note.number.value()} | static_cast<std::size_t>(note.style) << 7U;
  }
};

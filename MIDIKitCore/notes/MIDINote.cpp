#include "MIDIKitCore/notes/MIDINote.hpp"

#include <charconv>
#include <cmath>
#include <memory>
#include <system_error>

namespace midikit::core {

namespace {

constexpr int referenceNote = 69;

std::optional<int> decimalInteger(std::string_view text) {
  if (text.starts_with('+')) {
    text.remove_prefix(1);
    if (text.starts_with('-')) {
      return std::nullopt;
    }
  }
  int integer = 0;
  const char* const end = std::to_address(text.end());
  const auto [stop, error] = std::from_chars(std::to_address(text.begin()), end, integer);
  return error == std::errc{} && stop == end ? std::optional(integer) : std::nullopt;
}

}  // namespace

double noteFrequency(int number, double tuning) {
  return tuning * std::exp2((static_cast<double>(number) - referenceNote) / 12);
}

std::optional<int> nearestNoteNumber(double frequency, double tuning) {
  if (!(frequency > 0)) {
    return std::nullopt;
  }
  const double number = 12 * std::log2(frequency / tuning) + referenceNote;
  return std::isfinite(number) ? std::optional(static_cast<int>(std::lround(number))) : std::nullopt;
}

MIDINote::NoteResult MIDINote::fromText(std::string_view text, Style style) {
  static constexpr std::string_view letters = "ABCDEFG";
  if (text.empty() || letters.find(text.front()) == std::string_view::npos) {
    return NoteError::malformedNoteName;
  }
  const auto accidental = firstAccidental(text);
  const auto nameLength = accidental ? accidental->position + accidental->length : 1;
  const auto name = noteName(text.substr(0, nameLength));
  if (!name) {
    return NoteError::malformedNoteName;
  }
  const auto octave = decimalInteger(text.substr(nameLength));
  if (!octave) {
    return NoteError::outOfBounds;
  }
  return fromName(*name, *octave, style);
}

MIDINote::NoteResult MIDINote::fromFrequency(double frequency, Style style) {
  const auto nearest = nearestNoteNumber(frequency);
  if (!nearest) {
    return NoteError::outOfBounds;
  }
  return fromNumber(*nearest, style);
}

std::string MIDINote::stringValue(MIDINoteSpelling spelling) const {
  return std::string(text(name(), spelling)).append(std::to_string(octave()));
}

std::string MIDINote::debugDescription() const {
  return "Note(" + description() + " number:" + std::to_string(number.value()) + ")";
}

}  // namespace midikit::core

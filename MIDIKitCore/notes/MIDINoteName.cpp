#include "MIDIKitCore/notes/MIDINoteName.hpp"

namespace midikit::core {

namespace {

struct Texts {
  std::string_view sharp;
  std::string_view flat;
  std::string_view unicodeSharp;
  std::string_view unicodeFlat;
};

constexpr Texts sameInAll(std::string_view letter) {
  return {letter, letter, letter, letter};
}

// In the order of the enumeration.
constexpr std::array<Texts, 12> textsOfNames{{
    sameInAll("A"),
    {"A#", "Bb", "A♯", "B♭"},
    sameInAll("B"),
    sameInAll("C"),
    {"C#", "Db", "C♯", "D♭"},
    sameInAll("D"),
    {"D#", "Eb", "D♯", "E♭"},
    sameInAll("E"),
    sameInAll("F"),
    {"F#", "Gb", "F♯", "G♭"},
    sameInAll("G"),
    {"G#", "Ab", "G♯", "A♭"},
}};

struct AccidentalText {
  std::string_view text;
  bool isSharp;
};

constexpr std::array<AccidentalText, 4> accidentalTexts{
    {{"#", true}, {"♯", true}, {"b", false}, {"♭", false}}};

std::optional<MIDINoteName> nameOfLetter(char letter) {
  switch (letter) {
    case 'A':
    case 'a':
      return MIDINoteName::A;
    case 'B':
    case 'b':
      return MIDINoteName::B;
    case 'C':
    case 'c':
      return MIDINoteName::C;
    case 'D':
    case 'd':
      return MIDINoteName::D;
    case 'E':
    case 'e':
      return MIDINoteName::E;
    case 'F':
    case 'f':
      return MIDINoteName::F;
    case 'G':
    case 'g':
      return MIDINoteName::G;
    default:
      return std::nullopt;
  }
}

}  // namespace

std::string_view text(MIDINoteName name, MIDINoteSpelling spelling) {
  const Texts& texts = textsOfNames[static_cast<std::size_t>(name)];
  if (spelling.respellSharpAsFlat) {
    return spelling.unicodeAccidental ? texts.unicodeFlat : texts.flat;
  }
  return spelling.unicodeAccidental ? texts.unicodeSharp : texts.sharp;
}

std::optional<MIDINoteAccidental> firstAccidental(std::string_view text) {
  std::optional<MIDINoteAccidental> first;
  for (const auto& [accidental, isSharp] : accidentalTexts) {
    const auto position = text.find(accidental);
    if (position != std::string_view::npos && (!first || position < first->position)) {
      first = {.position = position, .length = accidental.size(), .isSharp = isSharp};
    }
  }
  return first;
}

std::optional<MIDINoteName> noteName(std::string_view text) {
  const auto letter = text.empty() ? std::nullopt : nameOfLetter(text.front());
  if (!letter || text.size() == 1) {
    return letter;
  }
  const auto accidental = firstAccidental(text.substr(1));
  if (!accidental || accidental->position != 0) {
    return std::nullopt;
  }
  const int altered = semitone(*letter) + (accidental->isSharp ? 1 : -1);
  if (altered < 0 || altered > 11) {
    return std::nullopt;
  }
  return noteName(altered);
}

}  // namespace midikit::core

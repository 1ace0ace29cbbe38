#include "MIDIKitCore/notes/MIDINote.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_set>
#include <vector>

#include "MIDIKitCore/notes/MIDINoteRange.hpp"

namespace midikit::core {
namespace {

using namespace literals;
using Name = MIDINote::Name;
using Style = MIDINote::Style;
using NoteError = MIDINote::NoteError;
using NoteResult = MIDINote::NoteResult;

constexpr std::array styles{Style::yamaha, Style::roland, Style::cakewalk};
static_assert(sizeof(MIDINote) == 2 && std::is_trivially_copyable_v<MIDINote>);

// The octave as every maker's table has it.
constexpr std::array names{Name::C, Name::C_sharp, Name::D, Name::D_sharp, Name::E, Name::F, Name::F_sharp,
                           Name::G, Name::G_sharp, Name::A, Name::A_sharp, Name::B};
constexpr std::array<const char*, 12> sharpTexts{"C",  "C#", "D",  "D#", "E",  "F",
                                                 "F#", "G",  "G#", "A",  "A#", "B"};
constexpr std::array<const char*, 12> flatTexts{"C",  "Db", "D",  "Eb", "E",  "F",
                                                "Gb", "G",  "Ab", "A",  "Bb", "B"};

std::string nameText(std::size_t semitone, MIDINoteSpelling spelling) {
  const std::string ascii = (spelling.respellSharpAsFlat ? flatTexts : sharpTexts)[semitone];
  if (ascii.size() == 1 || !spelling.unicodeAccidental) {
    return ascii;
  }
  return ascii.substr(0, 1) + (spelling.respellSharpAsFlat ? "\u266D" : "\u266F");
}

/// The octave of note 0.
int firstOctaveOf(Style style) {
  return static_cast<int>(style) - 2;
}

TEST(MIDINoteTest, NamesEveryNoteInEveryStyleAndReadsTheTextBack) {
  for (const Style style : styles) {
    for (int number = 0; number <= 127; ++number) {
      const MIDINote note(UInt7(number), style);
      const auto semitone = static_cast<std::size_t>(number % 12);
      const int octave = number / 12 + firstOctaveOf(style);
      ASSERT_EQ(note.name(), names[semitone]);
      ASSERT_EQ(note.octave(), octave);
      ASSERT_EQ(note.isSharp(), nameText(semitone, {}).size() == 2);
      for (const bool isFlat : {false, true}) {
        for (const bool isUnicode : {false, true}) {
          const MIDINoteSpelling spelling{.respellSharpAsFlat = isFlat, .unicodeAccidental = isUnicode};
          const auto text = nameText(semitone, spelling) + std::to_string(octave);
          ASSERT_EQ(note.stringValue(spelling), text);
          ASSERT_EQ(MIDINote::fromText(text, style), NoteResult(note));
        }
      }
      ASSERT_EQ(note.description(), note.stringValue({.unicodeAccidental = true}));
    }
  }
}

TEST(MIDINoteTest, CountsOctavesByTheStyle) {
  EXPECT_EQ(MIDINote(60_u7).style, Style::yamaha);
  EXPECT_EQ(MIDINote(61_u7).debugDescription(), "Note(C\u266F3 number:61)");
  EXPECT_EQ(description(Style::yamaha), "Yamaha (Middle C == C3)");
  EXPECT_EQ(description(Style::roland), "Roland (Middle C == C4)");
  EXPECT_EQ(description(Style::cakewalk), "Cakewalk (Middle C == C5)");
}

TEST(MIDINoteTest, TellsAMalformedNameFromAnOctaveThatIsNone) {
  using namespace std::string_view_literals;
  const struct {
    std::string_view text;
    MIDINote note;
  } read[] = {{"C+3", 60_u7}, {"C003", 60_u7}, {"E#3", 65_u7}, {"E\u266F+3", 65_u7}, {"F\u266D3", 64_u7},
              {"C8", 120_u7}, {"C-0", 24_u7},  {"Ab3", 68_u7}, {"Bb-1", 22_u7}};
  for (const auto& [text, note] : read) {
    EXPECT_EQ(MIDINote::fromText(text), NoteResult(note)) << text;
  }
  for (const std::string_view text :
       {""sv, "c3"sv, "H3"sv, " C3"sv, "3"sv, "#3"sv, "\u266F"sv, "B#3"sv, "B\u266F3"sv, "Cb3"sv,
        "C\u266D3"sv, "C3#"sv, "C 3b"sv, "Cx#3"sv, "C3\u266D"sv, "\0"sv}) {
    EXPECT_EQ(MIDINote::fromText(text), NoteResult(NoteError::malformedNoteName)) << text;
  }
  for (const std::string_view text : {"C"sv,
                                      "C#"sv,
                                      "Cx"sv,
                                      "C++3"sv,
                                      "C+-1"sv,
                                      "C-"sv,
                                      "C+"sv,
                                      "C3 "sv,
                                      "C 3"sv,
                                      "C3.0"sv,
                                      "C##3"sv,
                                      "Abb3"sv,
                                      "C#\u266F3"sv,
                                      "C\xE2\x99"sv,
                                      "C3\0"sv,
                                      "C99999999999999999999"sv,
                                      "C-99999999999999999999"sv,
                                      "C0x3"sv,
                                      "C9"sv,
                                      "G#8"sv,
                                      "B-3"sv}) {
    EXPECT_EQ(MIDINote::fromText(text), NoteResult(NoteError::outOfBounds)) << text;
  }
  EXPECT_EQ(description(NoteError::outOfBounds), "MIDI note is out of bounds (invalid).");
  EXPECT_EQ(description(NoteError::malformedNoteName),
            "An unexpected or malformed note name was encountered.");
}

TEST(MIDINoteTest, KeepsToTheOctavesOfTheStyle) {
  for (const Style style : styles) {
    for (int number = -240; number <= 360; ++number) {
      const auto byNumber = MIDINote::fromNumber(number, style);
      const bool isNote = number >= 0 && number <= 127;
      ASSERT_EQ(byNumber, isNote ? NoteResult(MIDINote(UInt7(number), style)) : NoteError::outOfBounds);
      const int octave = (number + 240) / 12 - 20 + firstOctaveOf(style);
      const Name name = names[static_cast<std::size_t>(number + 240) % 12];
      ASSERT_EQ(MIDINote::fromName(name, octave, style), byNumber) << number;
    }
    for (const int octave : {std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
      EXPECT_FALSE(MIDINote::fromName(Name::C, octave, style));
    }
  }
  EXPECT_FALSE(MIDINote::fromNumber(std::numeric_limits<std::uint64_t>::max()));
}

TEST(MIDINoteNameTest, ReadsALetterInEitherCaseAndTheAccidentalAfterIt) {
  struct Row {
    char letter;
    std::optional<Name> alone, sharp, flat;
  };
  for (const Row& row :
       {Row{'A', Name::A, Name::A_sharp, Name::G_sharp}, Row{'B', Name::B, {}, Name::A_sharp},
        Row{'C', Name::C, Name::C_sharp, {}}, Row{'D', Name::D, Name::D_sharp, Name::C_sharp},
        Row{'E', Name::E, Name::F, Name::D_sharp}, Row{'F', Name::F, Name::F_sharp, Name::E},
        Row{'G', Name::G, Name::G_sharp, Name::F_sharp}, Row{'H', {}, {}, {}}, Row{'1', {}, {}, {}}}) {
    for (const char letter : {row.letter, static_cast<char>(row.letter | 32)}) {
      const std::string text(1, letter);
      EXPECT_EQ(noteName(text), row.alone) << text;
      EXPECT_EQ(noteName(text + "#"), row.sharp) << text;
      EXPECT_EQ(noteName(text + "\u266F3"), row.sharp) << text;
      EXPECT_EQ(noteName(text + "bb"), row.flat) << text;
      EXPECT_EQ(noteName(text + "\u266D"), row.flat) << text;
      EXPECT_EQ(noteName(text + "3#"), std::nullopt) << text;
    }
  }
  EXPECT_EQ(noteName(""), std::nullopt);
  EXPECT_EQ(noteName("#"), std::nullopt);
}

TEST(MIDINoteTest, FindsTheNearestNoteOfAFrequency) {
  EXPECT_EQ(MIDINote(69_u7).frequency(), 440.0);
  EXPECT_EQ(MIDINote(69_u7).frequency(443.0), 443.0);
  EXPECT_EQ(MIDINote(57_u7).frequency(), 220.0);
  EXPECT_NEAR(MIDINote(60_u7).frequency(), 261.6256, 0.0001);
  EXPECT_EQ(nearestNoteNumber(432.0, 432.0), 69);
  EXPECT_EQ(nearestNoteNumber(1.0), -36);
  EXPECT_EQ(MIDINote::fromFrequency(441.0), NoteResult(MIDINote(69_u7)));
  for (const Style style : styles) {
    for (int number = -60; number <= 300; ++number) {
      ASSERT_EQ(nearestNoteNumber(noteFrequency(number)), number);
      for (const double cents : {-49.0, 0.0, 49.0}) {
        const auto note = MIDINote::fromFrequency(noteFrequency(number) * std::exp2(cents / 1200), style);
        ASSERT_EQ(note, MIDINote::fromNumber(number, style)) << number << ' ' << cents;
      }
    }
  }
}

TEST(MIDINoteTest, RefusesAFrequencyThatIsNone) {
  using Limits = std::numeric_limits<double>;
  for (const double frequency : {0.0, -0.0, -440.0, Limits::infinity(), -Limits::infinity(),
                                 Limits::quiet_NaN(), Limits::denorm_min(), Limits::min(), Limits::max()}) {
    EXPECT_EQ(MIDINote::fromFrequency(frequency), NoteResult(NoteError::outOfBounds)) << frequency;
  }
  for (const double tuning : {0.0, -440.0, Limits::infinity(), Limits::quiet_NaN()}) {
    EXPECT_EQ(nearestNoteNumber(440.0, tuning), std::nullopt) << tuning;
  }
}

TEST(MIDINoteTest, OrdersByTheNumberAndIsEqualInBothFields) {
  const MIDINote low(60_u7, Style::cakewalk);
  const MIDINote high(61_u7, Style::yamaha);
  EXPECT_LT(low, high);
  EXPECT_EQ(MIDINote(60_u7) <=> low, std::weak_ordering::equivalent);
  EXPECT_NE(MIDINote(60_u7), low);
  std::unordered_set<std::size_t> hashes;
  for (const Style style : styles) {
    for (const MIDINote note : MIDINote::allNotes(style)) {
      hashes.insert(std::hash<MIDINote>{}(note));
    }
  }
  EXPECT_EQ(hashes.size(), 3 * 128);
}

TEST(MIDINoteTest, StepsAndStaysOnTheFirstAndLastNote) {
  for (int number = 0; number <= 127; ++number) {
    const MIDINote note(UInt7(number), Style::roland);
    for (int steps = -200; steps <= 200; ++steps) {
      const MIDINote moved = note.advanced(steps);
      ASSERT_EQ(moved, MIDINote(UInt7(std::clamp(number + steps, 0, 127)), Style::roland));
      ASSERT_EQ(note.distanceTo(moved), moved.number.value() - number);
    }
    ASSERT_EQ(note.advanced(std::numeric_limits<int>::max()).number, 127_u7);
    ASSERT_EQ(note.advanced(std::numeric_limits<int>::min()).number, 0_u7);
  }
}

TEST(MIDINoteRangeTest, HoldsEveryNoteFromTheLowestToTheHighest) {
  const auto expectRange = [](MIDINoteRange range, int lowest, int highest, Style style) {
    std::vector<MIDINote> expected;
    for (int number = lowest; number <= highest; ++number) {
      expected.emplace_back(UInt7(number), style);
    }
    EXPECT_EQ(std::vector<MIDINote>(range.begin(), range.end()), expected);
    EXPECT_EQ(range.size(), expected.size());
    for (int number = 0; number <= 127; ++number) {
      ASSERT_EQ(range.contains(UInt7(number)), number >= lowest && number <= highest);
    }
  };
  for (const Style style : styles) {
    expectRange(MIDINote::allNotes(style), 0, 127, style);
    expectRange(MIDINote::pianoKeys(style), 21, 108, style);
    expectRange({{5_u7, style}, {5_u7, style}}, 5, 5, style);
  }
}

}  // namespace
}  // namespace midikit::core

#include "MIDIKitCore/MIDINote.hpp"

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

#include "MIDIKitCore/MIDINoteRange.hpp"

namespace midikit::core {
namespace {

using namespace literals;
using Name = MIDINote::Name;
using Style = MIDINote::Style;
using NoteError = MIDINote::NoteError;

constexpr std::array styles{Style::yamaha, Style::roland, Style::cakewalk};
static_assert(sizeof(MIDINote) == 2 && std::is_trivially_copyable_v<MIDINote>);

/// The octave as every maker's table has it, C to B.
struct OctaveRow {
  Name name;
  std::string_view sharp, flat, unicodeSharp, unicodeFlat;
};
constexpr std::array<OctaveRow, 12> octaveTable{{
    {Name::C, "C", "C", "C", "C"},
    {Name::C_sharp, "C#", "Db", "C\u266F", "D\u266D"},
    {Name::D, "D", "D", "D", "D"},
    {Name::D_sharp, "D#", "Eb", "D\u266F", "E\u266D"},
    {Name::E, "E", "E", "E", "E"},
    {Name::F, "F", "F", "F", "F"},
    {Name::F_sharp, "F#", "Gb", "F\u266F", "G\u266D"},
    {Name::G, "G", "G", "G", "G"},
    {Name::G_sharp, "G#", "Ab", "G\u266F", "A\u266D"},
    {Name::A, "A", "A", "A", "A"},
    {Name::A_sharp, "A#", "Bb", "A\u266F", "B\u266D"},
    {Name::B, "B", "B", "B", "B"},
}};

void expectNote(const MIDINote::NoteResult& result, MIDINote note) {
  ASSERT_TRUE(result);
  ASSERT_EQ(result->number, note.number);
  ASSERT_EQ(result->style, note.style);
}

void expectError(const MIDINote::NoteResult& result, NoteError error) {
  ASSERT_FALSE(result);
  ASSERT_EQ(result.error(), error);
}

TEST(MIDINoteTest, NamesEveryNoteInEveryStyleAndReadsTheTextBack) {
  for (std::size_t position = 0; position < styles.size(); ++position) {
    const Style style = styles[position];
    for (int number = 0; number <= 127; ++number) {
      const MIDINote note(UInt7(number), style);
      const OctaveRow& row = octaveTable[static_cast<std::size_t>(number) % 12];
      const int octave = number / 12 - 2 + static_cast<int>(position);
      ASSERT_EQ(note.name(), row.name);
      ASSERT_EQ(note.octave(), octave);
      ASSERT_EQ(note.isSharp(), row.sharp.size() == 2);
      ASSERT_EQ(isSharp(note.name()), note.isSharp());
      expectNote(MIDINote::fromName(row.name, octave, style), note);
      expectNote(MIDINote::fromNumber(number, style), note);
      struct Form {
        MIDINoteSpelling spelling;
        std::string_view name;
      };
      for (const auto& [spelling, name] :
           {Form{{.respellSharpAsFlat = false, .unicodeAccidental = false}, row.sharp},
            Form{{.respellSharpAsFlat = true, .unicodeAccidental = false}, row.flat},
            Form{{.respellSharpAsFlat = false, .unicodeAccidental = true}, row.unicodeSharp},
            Form{{.respellSharpAsFlat = true, .unicodeAccidental = true}, row.unicodeFlat}}) {
        const auto text = note.stringValue(spelling);
        ASSERT_EQ(text, std::string(name) + std::to_string(octave));
        expectNote(MIDINote::fromText(text, style), note);
      }
      ASSERT_EQ(note.description(), note.stringValue({.unicodeAccidental = true}));
    }
  }
}

TEST(MIDINoteTest, CountsOctavesByTheStyle) {
  EXPECT_EQ(MIDINote(60_u7).style, Style::yamaha);
  EXPECT_EQ(MIDINote(0_u7, Style::yamaha).stringValue(), "C-2");
  EXPECT_EQ(MIDINote(0_u7, Style::roland).stringValue(), "C-1");
  EXPECT_EQ(MIDINote(0_u7, Style::cakewalk).stringValue(), "C0");
  EXPECT_EQ(MIDINote(127_u7, Style::cakewalk).stringValue(), "G10");
  EXPECT_EQ(MIDINote(61_u7).debugDescription(), "Note(C\u266F3 number:61)");
  EXPECT_EQ(description(Style::yamaha), "Yamaha (Middle C == C3)");
  EXPECT_EQ(description(Style::roland), "Roland (Middle C == C4)");
  EXPECT_EQ(description(Style::cakewalk), "Cakewalk (Middle C == C5)");
}

TEST(MIDINoteTest, ReadsTextsThatNoNoteWrites) {
  struct Row {
    std::string_view text;
    Style style;
    int number;
  };
  for (const auto& [text, style, number] : {Row{"C+3", Style::yamaha, 60},
                                            {"E#3", Style::yamaha, 65},
                                            {"E\u266F+3", Style::yamaha, 65},
                                            {"Fb3", Style::yamaha, 64},
                                            {"F\u266D3", Style::roland, 52},
                                            {"C003", Style::yamaha, 60},
                                            {"C-0", Style::cakewalk, 0},
                                            {"Bb+10", Style::yamaha, -1},
                                            {"G10", Style::cakewalk, 127}}) {
    const auto note = MIDINote::fromText(text, style);
    ASSERT_EQ(bool{note}, number >= 0) << text;
    if (note) {
      EXPECT_EQ(*note, MIDINote(UInt7(number), style)) << text;
    }
  }
}

TEST(MIDINoteTest, TellsAMalformedNameFromAnOctaveThatIsNone) {
  using namespace std::string_view_literals;
  for (const std::string_view text :
       {""sv, "c3"sv, "H3"sv, " C3"sv, "3"sv, "#3"sv, "\u266F"sv, "B#3"sv, "B\u266F3"sv, "Cb3"sv,
        "C\u266D3"sv, "C3#"sv, "C 3b"sv, "Cx#3"sv, "C3\u266D"sv, "\0"sv}) {
    SCOPED_TRACE(text);
    expectError(MIDINote::fromText(text), NoteError::malformedNoteName);
  }
  for (const std::string_view text :
       {"C"sv, "C#"sv, "Cx"sv, "C++3"sv, "C+-3"sv, "C-"sv, "C+"sv, "C3 "sv, "C 3"sv, "C3.0"sv, "C##3"sv,
        "Abb3"sv, "C#\u266F3"sv, "C\xE2\x99"sv, "C3\0"sv, "C99999999999999999999"sv,
        "C-99999999999999999999"sv, "C0x3"sv}) {
    SCOPED_TRACE(text);
    expectError(MIDINote::fromText(text), NoteError::outOfBounds);
  }
  EXPECT_EQ(description(NoteError::outOfBounds), "MIDI note is out of bounds (invalid).");
  EXPECT_EQ(description(NoteError::malformedNoteName),
            "An unexpected or malformed note name was encountered.");
}

TEST(MIDINoteTest, KeepsToTheOctavesOfTheStyle) {
  for (const Style style : styles) {
    for (int octave = firstOctave(style) - 20; octave <= firstOctave(style) + 20; ++octave) {
      for (const OctaveRow& row : octaveTable) {
        const int number = (octave - firstOctave(style)) * 12 + static_cast<int>(&row - octaveTable.data());
        const auto byName = MIDINote::fromName(row.name, octave, style);
        const auto byText = MIDINote::fromText(std::string(row.sharp) + std::to_string(octave), style);
        ASSERT_EQ(byName, byText);
        ASSERT_EQ(bool{byName}, number >= 0 && number <= 127) << number;
        ASSERT_EQ(MIDINote::fromNumber(number, style), byName);
      }
    }
    for (const int octave : {std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
      expectError(MIDINote::fromName(Name::C, octave, style), NoteError::outOfBounds);
    }
  }
  expectError(MIDINote::fromNumber(std::numeric_limits<std::uint64_t>::max()), NoteError::outOfBounds);
}

TEST(MIDINoteNameTest, ReadsALetterInEitherCaseAndTheAccidentalBehindIt) {
  struct Row {
    char letter;
    std::optional<Name> alone, sharp, flat;
  };
  for (const Row& row :
       {Row{'A', Name::A, Name::A_sharp, Name::G_sharp}, Row{'B', Name::B, {}, Name::A_sharp},
        Row{'C', Name::C, Name::C_sharp, {}}, Row{'D', Name::D, Name::D_sharp, Name::C_sharp},
        Row{'E', Name::E, Name::F, Name::D_sharp}, Row{'F', Name::F, Name::F_sharp, Name::E},
        Row{'G', Name::G, Name::G_sharp, Name::F_sharp}}) {
    for (const std::string& letter :
         {std::string{row.letter}, std::string{static_cast<char>(row.letter + 32)}}) {
      EXPECT_EQ(noteName(letter), row.alone) << letter;
      EXPECT_EQ(noteName(letter + "#"), row.sharp) << letter;
      EXPECT_EQ(noteName(letter + "\u266F3"), row.sharp) << letter;
      EXPECT_EQ(noteName(letter + "bb"), row.flat) << letter;
      EXPECT_EQ(noteName(letter + "\u266D"), row.flat) << letter;
      EXPECT_EQ(noteName(letter + "3"), std::nullopt) << letter;
      EXPECT_EQ(noteName(letter + "3#"), std::nullopt) << letter;
    }
  }
  for (const std::string_view text : {"", "#", "H", "h#", "1"}) {
    EXPECT_EQ(noteName(text), std::nullopt) << text;
  }
}

TEST(MIDINoteTest, FindsTheNearestNoteOfAFrequency) {
  EXPECT_EQ(MIDINote(69_u7).frequency(), 440.0);
  EXPECT_EQ(MIDINote(69_u7).frequency(443.0), 443.0);
  EXPECT_EQ(MIDINote(57_u7).frequency(), 220.0);
  EXPECT_NEAR(MIDINote(60_u7).frequency(), 261.6256, 0.0001);
  EXPECT_EQ(nearestNoteNumber(432.0, 432.0), 69);
  EXPECT_EQ(nearestNoteNumber(1.0), -36);
  expectNote(MIDINote::fromFrequency(441.0), 69_u7);
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
    SCOPED_TRACE(frequency);
    expectError(MIDINote::fromFrequency(frequency), NoteError::outOfBounds);
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

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

#include "MIDIKitCore/events/ParameterNumberEvents.hpp"

namespace midikit::core {
namespace {

using namespace literals;
using Registered = RegisteredController;
using Assignable = AssignableController;

struct Row {
  Registered parameter;
  UInt7Pair number;
  std::optional<UInt7> msb;
  std::optional<UInt7> lsb;
  std::string text;
};

std::vector<Row> plainRows() {
  return {
      {Registered::pitchBendSensitivity(2_u7, 50_u7),
       {0_u7, 0_u7},
       2_u7,
       50_u7,
       "pitchBendSensitivity(semitones: 2, cents: 50)"},
      {Registered::channelFineTuning(0x3FFE_u14), {0_u7, 1_u7}, 127_u7, 126_u7, "channelFineTuning(16382)"},
      {Registered::channelCoarseTuning(64_u7), {0_u7, 2_u7}, 64_u7, {}, "channelCoarseTuning(64)"},
      {Registered::tuningProgramChange(3_u7), {0_u7, 3_u7}, 3_u7, {}, "tuningProgramChange(zero-based: 3)"},
      {Registered::tuningBankSelect(4_u7), {0_u7, 4_u7}, 4_u7, {}, "tuningBankSelect(zero-based: 4)"},
      {Registered::modulationDepthRange(5_u7, {}),
       {0_u7, 5_u7},
       5_u7,
       {},
       "modulationDepthRange(dataMSB: 5, dataLSB: nil (0))"},
      {Registered::mpeConfigurationMessage({}, 6_u7),
       {0_u7, 6_u7},
       {},
       6_u7,
       "mpeConfigurationMessage(dataMSB: nil (0), dataLSB: 6)"},
      {Registered::raw({2_u7, 3_u7}, {}, 7_u7),
       {2_u7, 3_u7},
       {},
       7_u7,
       "raw(param: [msb: 0x02, lsb: 0x03], dataMSB: nil (0), dataLSB: 7)"},
      {Registered::null(), {127_u7, 127_u7}, {}, {}, "null"},
  };
}

/// Of three-dimensional sound, in the order of their numbers, which begin with 61, 0.
std::vector<Row> threeDimensionalRows() {
  const struct {
    Registered (*make)(UInt7 dataEntryMSB, UInt7 dataEntryLSB);
    std::string name;
  } parameters[] = {
      {Registered::threeDimensionalAzimuthAngle, "AzimuthAngle"},
      {Registered::threeDimensionalElevationAngle, "ElevationAngle"},
      {Registered::threeDimensionalGain, "Gain"},
      {Registered::threeDimensionalDistanceRatio, "DistanceRatio"},
      {Registered::threeDimensionalMaximumDistance, "MaximumDistance"},
      {Registered::threeDimensionalGainAtMaximumDistance, "GainAtMaximumDistance"},
      {Registered::threeDimensionalReferenceDistanceRatio, "ReferenceDistanceRatio"},
      {Registered::threeDimensionalPanSpreadAngle, "PanSpreadAngle"},
      {Registered::threeDimensionalRollAngle, "RollAngle"},
  };
  std::vector<Row> rows;
  for (const auto& [make, name] : parameters) {
    rows.push_back({make(1_u7, 2_u7),
                    {61_u7, UInt7(rows.size())},
                    1_u7,
                    2_u7,
                    "threeDimensional" + name + "(dataMSB: 1, dataLSB: 2)"});
  }
  return rows;
}

TEST(RegisteredControllerTest, EveryCaseHasANumberADataEntryAndATextAndIsReadBack) {
  std::vector<Row> rows = plainRows();
  std::ranges::copy(threeDimensionalRows(), std::back_inserter(rows));
  for (const Row& row : rows) {
    SCOPED_TRACE(row.text);
    EXPECT_EQ(row.parameter.parameterNumber(), row.number);
    EXPECT_EQ(row.parameter.dataEntryMSB(), row.msb);
    EXPECT_EQ(row.parameter.dataEntryLSB(), row.lsb);
    EXPECT_EQ(row.parameter.description(), row.text);
    EXPECT_EQ(Registered::fromWire(row.number, row.msb, row.lsb), row.parameter);
    for (const Row& other : rows) {
      EXPECT_EQ(row.parameter == other.parameter, &row == &other) << other.text;
    }
  }
  EXPECT_NE(Registered::raw({0_u7, 0_u7}, 1_u7, 2_u7), Registered::pitchBendSensitivity(1_u7, 2_u7));
}

TEST(RegisteredControllerTest, EveryParameterNumberHasItsCase) {
  for (int number = 0; number < 128 * 128; ++number) {
    const UInt7Pair pair = {UInt7(number / 128), UInt7(number % 128)};
    const Registered parameter = Registered::fromWire(pair, 1_u7, 2_u7);
    ASSERT_EQ(parameter.parameterNumber(), pair);
    const bool hasCase = number <= 6 || (number >= 61 * 128 && number <= 61 * 128 + 8) || number == 0x3FFF;
    ASSERT_EQ(parameter == Registered::raw(pair, 1_u7, 2_u7), !hasCase) << number;
  }
}

TEST(RegisteredControllerTest, TakesFromADataEntryWhatTheCaseHasRoomFor) {
  const struct {
    std::string description;
    UInt7Pair number;
    std::optional<UInt7> msb;
    std::optional<UInt7> lsb;
    Registered read;
  } cases[] = {
      {"both bytes count as 0", {0_u7, 0_u7}, {}, {}, Registered::pitchBendSensitivity(0_u7, 0_u7)},
      {"the lower half counts as 0", {0_u7, 1_u7}, 1_u7, {}, Registered::channelFineTuning(128_u14)},
      {"the upper half counts as 0", {0_u7, 1_u7}, {}, 1_u7, Registered::channelFineTuning(1_u14)},
      {"the only byte counts as 0", {0_u7, 2_u7}, {}, 5_u7, Registered::channelCoarseTuning(0_u7)},
      {"a second byte is left out", {0_u7, 3_u7}, 5_u7, 6_u7, Registered::tuningProgramChange(5_u7)},
      {"the same of a bank", {0_u7, 4_u7}, 5_u7, 6_u7, Registered::tuningBankSelect(5_u7)},
      {"absent bytes stay absent", {0_u7, 5_u7}, {}, {}, Registered::modulationDepthRange({}, {})},
      {"both count as 0", {61_u7, 8_u7}, {}, {}, Registered::threeDimensionalRollAngle(0_u7, 0_u7)},
      {"there's no entry", {127_u7, 127_u7}, 1_u7, 2_u7, Registered::null()},
  };
  for (const auto& [description, number, msb, lsb, read] : cases) {
    EXPECT_EQ(Registered::fromWire(number, msb, lsb), read) << read.description() << ": " << description;
  }
}

TEST(AssignableControllerTest, IsNullForOneNumberOnly) {
  EXPECT_EQ(Assignable::fromWire({127_u7, 127_u7}, 1_u7, 2_u7), Assignable::null());
  EXPECT_EQ(Assignable::null().parameterNumber(), (UInt7Pair{127_u7, 127_u7}));
  EXPECT_FALSE(Assignable::null().dataEntryMSB() || Assignable::null().dataEntryLSB());
  EXPECT_EQ(Assignable::fromWire({127_u7, 126_u7}, 1_u7, {}), Assignable::raw({127_u7, 126_u7}, 1_u7, {}));
  EXPECT_NE(Assignable::raw({127_u7, 127_u7}, {}, {}), Assignable::null());
}

TEST(ParameterNumberEventsTest, HaveTexts) {
  EXPECT_EQ(description(MIDIParameterNumberType::registered), "registered");
  EXPECT_EQ(description(MIDIParameterNumberType::assignable), "assignable");
  EXPECT_EQ(description(MIDI2ParameterNumberChange::absolute), "absolute");
  EXPECT_EQ(description(MIDI2ParameterNumberChange::relative), "relative");
}

}  // namespace
}  // namespace midikit::core

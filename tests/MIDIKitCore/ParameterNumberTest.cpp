#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

#include "MIDIKitCore/ParameterNumberEvents.hpp"
#include "tests/MIDIKitCore/Events.hpp"

namespace midikit::core {
namespace {

using namespace literals;
using Registered = RegisteredController;

struct Row {
  Registered parameter;
  UInt7Pair number;
  std::optional<UInt7> msb;
  std::optional<UInt7> lsb;
  std::string text;
  /// Whether reading the number and the data entry back gives the same.
  bool isCanonical = true;
};

/// The parameters of three-dimensional sound, in the order of their numbers, which begin with 61, 0.
struct ThreeDimensional {
  Registered (*make)(UInt7 dataEntryMSB, UInt7 dataEntryLSB);
  std::string name;
};

std::vector<Row> threeDimensionalRows() {
  const ThreeDimensional parameters[] = {
      {Registered::threeDimensionalAzimuthAngle, "threeDimensionalAzimuthAngle"},
      {Registered::threeDimensionalElevationAngle, "threeDimensionalElevationAngle"},
      {Registered::threeDimensionalGain, "threeDimensionalGain"},
      {Registered::threeDimensionalDistanceRatio, "threeDimensionalDistanceRatio"},
      {Registered::threeDimensionalMaximumDistance, "threeDimensionalMaximumDistance"},
      {Registered::threeDimensionalGainAtMaximumDistance, "threeDimensionalGainAtMaximumDistance"},
      {Registered::threeDimensionalReferenceDistanceRatio, "threeDimensionalReferenceDistanceRatio"},
      {Registered::threeDimensionalPanSpreadAngle, "threeDimensionalPanSpreadAngle"},
      {Registered::threeDimensionalRollAngle, "threeDimensionalRollAngle"},
  };
  std::vector<Row> rows;
  for (const auto& [make, name] : parameters) {
    rows.push_back({.parameter = make(1_u7, 2_u7),
                    .number = {61_u7, UInt7(rows.size())},
                    .msb = 1_u7,
                    .lsb = 2_u7,
                    .text = name + "(dataMSB: 1, dataLSB: 2)"});
  }
  return rows;
}

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
      {Registered::raw({0_u7, 0_u7}, 1_u7, 2_u7),
       {0_u7, 0_u7},
       1_u7,
       2_u7,
       "raw(param: [msb: 0x00, lsb: 0x00], dataMSB: 1, dataLSB: 2)",
       false},
      {Registered::null(), {127_u7, 127_u7}, {}, {}, "null"},
  };
}

const std::vector<Row>& rows() {
  static const std::vector<Row> rows = [] {
    std::vector<Row> all = plainRows();
    std::ranges::copy(threeDimensionalRows(), std::back_inserter(all));
    return all;
  }();
  return rows;
}

TEST(RegisteredControllerTest, EveryCaseHasANumberADataEntryAndAText) {
  for (const Row& row : rows()) {
    SCOPED_TRACE(row.text);
    EXPECT_EQ(row.parameter.parameterNumber(), row.number);
    EXPECT_EQ(row.parameter.dataEntryMSB(), row.msb);
    EXPECT_EQ(row.parameter.dataEntryLSB(), row.lsb);
    EXPECT_EQ(row.parameter.description(), row.text);
    EXPECT_EQ(Registered::fromWire(row.number, row.msb, row.lsb) == row.parameter, row.isCanonical);
    for (const Row& other : rows()) {
      EXPECT_EQ(row.parameter == other.parameter, &row == &other) << other.text;
    }
  }
}

TEST(RegisteredControllerTest, EveryParameterNumberHasItsCase) {
  int canonical = 0;
  for (int msb = 0; msb <= 127; ++msb) {
    for (int lsb = 0; lsb <= 127; ++lsb) {
      const UInt7Pair number = {UInt7(msb), UInt7(lsb)};
      const Registered parameter = Registered::fromWire(number, 1_u7, 2_u7);
      ASSERT_EQ(parameter.parameterNumber(), number);
      canonical += parameter.kind() != Registered::Kind::raw ? 1 : 0;
    }
  }
  EXPECT_EQ(canonical, 17);
  EXPECT_EQ(Registered::fromWire({61_u7, 9_u7}, {}, 2_u7), Registered::raw({61_u7, 9_u7}, {}, 2_u7));
}

struct WireCase {
  std::string description;
  UInt7Pair number;
  std::optional<UInt7> msb;
  std::optional<UInt7> lsb;
  Registered read;
};

TEST(RegisteredControllerTest, TakesFromADataEntryWhatTheCaseHasRoomFor) {
  const WireCase cases[] = {
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
  using Assignable = AssignableController;
  EXPECT_EQ(Assignable::fromWire({127_u7, 127_u7}, 1_u7, 2_u7), Assignable::null());
  EXPECT_EQ(Assignable::null().parameterNumber(), (UInt7Pair{127_u7, 127_u7}));
  EXPECT_FALSE(Assignable::null().dataEntryMSB() || Assignable::null().dataEntryLSB());
  EXPECT_EQ(Assignable::fromWire({127_u7, 126_u7}, 1_u7, {}), Assignable::raw({127_u7, 126_u7}, 1_u7, {}));
  EXPECT_NE(Assignable::raw({127_u7, 127_u7}, {}, {}), Assignable::null());
  EXPECT_EQ(Assignable::null().description(), "null");
  EXPECT_EQ(Assignable::raw({2_u7, 3_u7}, 5_u7, {}).description(),
            "raw(param: [msb: 0x02, lsb: 0x03], dataMSB: 5, dataLSB: nil (0))");
}

TEST(ParameterNumberEventsTest, EveryRegisteredParameterGoesOutInBothProtocols) {
  for (const Row& row : rows()) {
    SCOPED_TRACE(row.text);
    const MIDIEvent event = MIDIEvent::rpn(row.parameter, 3_u4, 5_u4);
    Bytes bytes = {0xB3, 101, row.number.msb.value(), 0xB3, 100, row.number.lsb.value()};
    if (row.msb) {
      bytes.insert(bytes.end(), {0xB3, 6, row.msb->value()});
    }
    if (row.lsb) {
      bytes.insert(bytes.end(), {0xB3, 38, row.lsb->value()});
    }
    EXPECT_EQ(event.midi1Bytes(), bytes);
    std::vector<UMPPacket> packets;
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
      packets.push_back({0x25B30000U | std::uint32_t{bytes[i + 1]} << 8 | bytes[i + 2]});
    }
    EXPECT_EQ(event.umpWords(MIDIProtocolVersion::midi1_0), packets);
    const UInt14 entry(UInt7Pair{row.msb.value_or(0_u7), row.lsb.value_or(0_u7)});
    const UMPPacket packet = {
        0x45230000U | static_cast<std::uint32_t>(row.number.msb.value() << 8) | row.number.lsb.value(),
        ChanVoice14Bit32BitValue::midi1(entry).midi2Value()};
    EXPECT_EQ(event.umpWords(MIDIProtocolVersion::midi2_0), std::vector{packet});
  }
}

TEST(ParameterNumberEventsTest, TellsTheChangeInMIDI2Only) {
  const Registered registered = Registered::pitchBendSensitivity(2_u7, 0_u7);
  const AssignableController assignable = AssignableController::raw({1_u7, 2_u7}, 127_u7, 127_u7);
  const auto relative = MIDI2ParameterNumberChange::relative;
  struct Case {
    MIDIEvent event;
    std::string bytes;
    UMPPacket packet;
  };
  const Case cases[] = {
      {MIDIEvent::rpn(registered, 1_u4), "B1 65 00 B1 64 00 B1 06 02 B1 26 00", {0x40210000, 0x04000000}},
      {MIDIEvent::rpn(registered, relative, 1_u4),
       "B1 65 00 B1 64 00 B1 06 02 B1 26 00",
       {0x40410000, 0x04000000}},
      {MIDIEvent::nrpn(assignable, 1_u4), "B1 63 01 B1 62 02 B1 06 7F B1 26 7F", {0x40310102, 0xFFFFFFFF}},
      {MIDIEvent::nrpn(assignable, relative, 1_u4),
       "B1 63 01 B1 62 02 B1 06 7F B1 26 7F",
       {0x40510102, 0xFFFFFFFF}},
      {MIDIEvent::nrpn(AssignableController::null(), 0_u4), "B0 63 7F B0 62 7F", {0x40307F7F, 0}},
  };
  for (const auto& [event, bytes, packet] : cases) {
    EXPECT_EQ(event.midi1Bytes(), bytesOf(bytes)) << event.debugDescription();
    EXPECT_EQ(event.umpWords(MIDIProtocolVersion::midi2_0), std::vector{packet}) << event.debugDescription();
  }
}

TEST(ParameterNumberEventsTest, HaveTexts) {
  EXPECT_EQ(description(MIDIParameterNumberType::registered), "registered");
  EXPECT_EQ(description(MIDIParameterNumberType::assignable), "assignable");
  EXPECT_EQ(description(MIDI2ParameterNumberChange::absolute), "absolute");
  EXPECT_EQ(description(MIDI2ParameterNumberChange::relative), "relative");
}

}  // namespace
}  // namespace midikit::core

#include <gtest/gtest.h>

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

const std::vector<Row>& rows() {
  static const std::vector<Row> rows = {
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
      {Registered::threeDimensionalAzimuthAngle(1_u7, 2_u7),
       {61_u7, 0_u7},
       1_u7,
       2_u7,
       "threeDimensionalAzimuthAngle(dataMSB: 1, dataLSB: 2)"},
      {Registered::threeDimensionalElevationAngle(1_u7, 2_u7),
       {61_u7, 1_u7},
       1_u7,
       2_u7,
       "threeDimensionalElevationAngle(dataMSB: 1, dataLSB: 2)"},
      {Registered::threeDimensionalGain(1_u7, 2_u7),
       {61_u7, 2_u7},
       1_u7,
       2_u7,
       "threeDimensionalGain(dataMSB: 1, dataLSB: 2)"},
      {Registered::threeDimensionalDistanceRatio(1_u7, 2_u7),
       {61_u7, 3_u7},
       1_u7,
       2_u7,
       "threeDimensionalDistanceRatio(dataMSB: 1, dataLSB: 2)"},
      {Registered::threeDimensionalMaximumDistance(1_u7, 2_u7),
       {61_u7, 4_u7},
       1_u7,
       2_u7,
       "threeDimensionalMaximumDistance(dataMSB: 1, dataLSB: 2)"},
      {Registered::threeDimensionalGainAtMaximumDistance(1_u7, 2_u7),
       {61_u7, 5_u7},
       1_u7,
       2_u7,
       "threeDimensionalGainAtMaximumDistance(dataMSB: 1, dataLSB: 2)"},
      {Registered::threeDimensionalReferenceDistanceRatio(1_u7, 2_u7),
       {61_u7, 6_u7},
       1_u7,
       2_u7,
       "threeDimensionalReferenceDistanceRatio(dataMSB: 1, dataLSB: 2)"},
      {Registered::threeDimensionalPanSpreadAngle(1_u7, 2_u7),
       {61_u7, 7_u7},
       1_u7,
       2_u7,
       "threeDimensionalPanSpreadAngle(dataMSB: 1, dataLSB: 2)"},
      {Registered::threeDimensionalRollAngle(1_u7, 2_u7),
       {61_u7, 8_u7},
       1_u7,
       2_u7,
       "threeDimensionalRollAngle(dataMSB: 1, dataLSB: 2)"},
      {Registered::null(), {127_u7, 127_u7}, {}, {}, "null"},
  };
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

TEST(RegisteredControllerTest, TakesFromADataEntryWhatTheCaseHasRoomFor) {
  EXPECT_EQ(Registered::fromWire({0_u7, 0_u7}, {}, {}), Registered::pitchBendSensitivity(0_u7, 0_u7));
  EXPECT_EQ(Registered::fromWire({0_u7, 1_u7}, 1_u7, {}), Registered::channelFineTuning(128_u14));
  EXPECT_EQ(Registered::fromWire({0_u7, 1_u7}, {}, 1_u7), Registered::channelFineTuning(1_u14));
  EXPECT_EQ(Registered::fromWire({0_u7, 2_u7}, {}, 5_u7), Registered::channelCoarseTuning(0_u7));
  EXPECT_EQ(Registered::fromWire({0_u7, 3_u7}, 5_u7, 5_u7), Registered::tuningProgramChange(5_u7));
  EXPECT_EQ(Registered::fromWire({0_u7, 4_u7}, 5_u7, 5_u7), Registered::tuningBankSelect(5_u7));
  EXPECT_EQ(Registered::fromWire({0_u7, 5_u7}, {}, {}), Registered::modulationDepthRange({}, {}));
  EXPECT_EQ(Registered::fromWire({61_u7, 8_u7}, {}, {}), Registered::threeDimensionalRollAngle(0_u7, 0_u7));
  EXPECT_EQ(Registered::fromWire({127_u7, 127_u7}, 1_u7, 2_u7), Registered::null());
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
  const auto words = [](const MIDIEvent& event) {
    return event.umpWords(MIDIProtocolVersion::midi2_0).front();
  };
  EXPECT_EQ(words(MIDIEvent::rpn(registered, 1_u4)), (UMPPacket{0x40210000, 0x04000000}));
  EXPECT_EQ(words(MIDIEvent::rpn(registered, relative, 1_u4)), (UMPPacket{0x40410000, 0x04000000}));
  EXPECT_EQ(words(MIDIEvent::nrpn(assignable, 1_u4)), (UMPPacket{0x40310102, 0xFFFFFFFF}));
  EXPECT_EQ(words(MIDIEvent::nrpn(assignable, relative, 1_u4)), (UMPPacket{0x40510102, 0xFFFFFFFF}));
  EXPECT_EQ(words(MIDIEvent::nrpn(AssignableController::null(), 0_u4)), (UMPPacket{0x40307F7F, 0}));
  EXPECT_EQ(MIDIEvent::rpn(registered, relative, 1_u4).midi1Bytes(),
            MIDIEvent::rpn(registered, 1_u4).midi1Bytes());
  EXPECT_EQ(MIDIEvent::nrpn(assignable, relative, 1_u4).midi1Bytes(),
            bytesOf("B1 63 01 B1 62 02 B1 06 7F B1 26 7F"));
  EXPECT_EQ(MIDIEvent::nrpn(AssignableController::null(), 0_u4).midi1Bytes(), bytesOf("B0 63 7F B0 62 7F"));
}

TEST(ParameterNumberEventsTest, HaveTexts) {
  EXPECT_EQ(description(MIDIParameterNumberType::registered), "registered");
  EXPECT_EQ(description(MIDIParameterNumberType::assignable), "assignable");
  EXPECT_EQ(description(MIDI2ParameterNumberChange::absolute), "absolute");
  EXPECT_EQ(description(MIDI2ParameterNumberChange::relative), "relative");
}

}  // namespace
}  // namespace midikit::core

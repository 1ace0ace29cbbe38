#include "MIDIKitCore/wire/MIDIUMPFields.hpp"

#include <gtest/gtest.h>

#include "MIDIKitCore/wire/MIDIProtocolVersion.hpp"

namespace midikit::core {
namespace {

TEST(MIDIUMPFieldsTest, EveryNumberHasItsCaseOrNone) {
  for (int raw = 0; raw <= 15; ++raw) {
    SCOPED_TRACE(raw);
    const UInt4 number(raw);
    const auto expectField = [raw](auto field, bool isCase) {
      ASSERT_EQ(field.has_value(), isCase);
      EXPECT_EQ(field ? static_cast<int>(*field) : raw, raw);
    };
    expectField(midiUMPMessageType(number), raw <= 5);
    expectField(midiUMPSysExStatusField(number), raw <= 3);
    expectField(midiUMPMixedDataSetStatusField(number), raw == 8 || raw == 9);
    expectField(midiUMPUtilityStatusField(number), raw <= 2);
  }
}

TEST(MIDIProtocolVersionTest, HasTexts) {
  EXPECT_EQ(description(MIDIProtocolVersion::midi1_0), "MIDI 1.0");
  EXPECT_EQ(description(MIDIProtocolVersion::midi2_0), "MIDI 2.0");
}

}  // namespace
}  // namespace midikit::core

#include "MIDIKitCore/numbers/ChanVoiceValue.hpp"

#include <cstdint>
#include <functional>
#include <limits>
#include <string>

#include "tests/MIDIKitCore/Events.hpp"

namespace midikit::core {
namespace {

using namespace literals;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

TEST(ChanVoiceValueTest, ReadsEveryFormFromAMIDI1Value) {
  for (int number = 0; number <= 127; ++number) {
    const UInt7 seven(number);
    ASSERT_EQ(Velocity::midi1(seven).midi1Value(), seven);
    ASSERT_EQ(Velocity::midi1(seven).midi2Value(), (scaledUp<7, 16>(seven.value())));
    ASSERT_EQ(Velocity::midi1(seven).unitIntervalValue(), unitIntervalFromInteger<7>(seven.value()));
    ASSERT_EQ(Amount::midi1(seven).midi1Value(), seven);
    ASSERT_EQ(Amount::midi1(seven).midi2Value(), (scaledUp<7, 32>(seven.value())));
    ASSERT_EQ(Amount::midi1(seven).unitIntervalValue(), unitIntervalFromInteger<7>(seven.value()));
  }
  for (int number = 0; number <= 16383; ++number) {
    const UInt14 fourteen(number);
    const Bend bend = Bend::midi1(fourteen);
    ASSERT_EQ(bend.midi1Value(), fourteen);
    ASSERT_EQ(bend.midi2Value(), (scaledUp<14, 32>(fourteen.value())));
    ASSERT_EQ(bend.unitIntervalValue(), unitIntervalFromInteger<14>(fourteen.value()));
    ASSERT_EQ(bend.bipolarUnitIntervalValue(), fourteen.bipolarValue());
  }
}

TEST(ChanVoiceValueTest, ReadsEveryFormFromAMIDI2Value) {
  for (std::uint32_t number = 0; number <= 0xFFFF; ++number) {
    const Velocity velocity = Velocity::midi2(static_cast<std::uint16_t>(number));
    ASSERT_EQ(velocity.midi1Value().value(), number >> 9);
    ASSERT_EQ(velocity.midi2Value(), number);
    ASSERT_EQ(velocity.unitIntervalValue(), unitIntervalFromInteger<16>(number));
    const std::uint32_t word = number << 16 | number;
    ASSERT_EQ(Amount::midi2(word).midi1Value().value(), word >> 25);
    ASSERT_EQ(Bend::midi2(word).midi1Value().value(), word >> 18);
    ASSERT_EQ(Bend::midi2(word).bipolarUnitIntervalValue(), bipolarIntervalFromInteger<32>(word));
    ASSERT_EQ(NoteValue::midi2(word).midi2Value(), word);
    ASSERT_EQ(NoteValue::midi2(word).unitIntervalValue(), unitIntervalFromInteger<32>(word));
  }
}

TEST(ChanVoiceValueTest, ReadsEveryFormFromANumber) {
  struct Row {
    Bend bend;
    double unit;
    double bipolar;
    unsigned fourteen;
    std::uint32_t word;
  };
  using B = Bend;
  for (const auto& [bend, unit, bipolar, fourteen, word] :
       {Row{B::unitInterval(0.0), 0.0, -1.0, 0, 0}, Row{B::unitInterval(0.25), 0.25, -0.5, 4096, 0x40000000},
        Row{B::unitInterval(0.5), 0.5, 0.0, 8192, 0x80000000},
        Row{B::unitInterval(0.75), 0.75, 0.5, 12287, 0xBFFFFFFF},
        Row{B::unitInterval(1.0), 1.0, 1.0, 16383, 0xFFFFFFFF},
        Row{B::unitInterval(2.0), 1.0, 1.0, 16383, 0xFFFFFFFF}, Row{B::unitInterval(-3.0), 0.0, -1.0, 0, 0},
        Row{B::unitInterval(infinity), 1.0, 1.0, 16383, 0xFFFFFFFF},
        Row{B::unitInterval(-infinity), 0.0, -1.0, 0, 0}, Row{B::unitInterval(notANumber), 0.0, -1.0, 0, 0},
        Row{B::bipolarUnitInterval(-1.0), 0.0, -1.0, 0, 0},
        Row{B::bipolarUnitInterval(-0.5), 0.25, -0.5, 4096, 0x40000000},
        Row{B::bipolarUnitInterval(0.0), 0.5, 0.0, 8192, 0x80000000},
        Row{B::bipolarUnitInterval(0.5), 0.75, 0.5, 12287, 0xBFFFFFFF},
        Row{B::bipolarUnitInterval(7.0), 1.0, 1.0, 16383, 0xFFFFFFFF},
        Row{B::bipolarUnitInterval(-infinity), 0.0, -1.0, 0, 0},
        Row{B::bipolarUnitInterval(notANumber), 0.5, 0.0, 8192, 0x80000000}}) {
    SCOPED_TRACE(bend.description());
    EXPECT_EQ(bend.unitIntervalValue(), unit);
    EXPECT_EQ(bend.bipolarUnitIntervalValue(), bipolar);
    EXPECT_EQ(bend.midi1Value().value(), fourteen);
    EXPECT_EQ(bend.midi2Value(), word);
  }
  for (const double unit : {-3.0, 0.0, 0.3, 0.5, 0.75, 1.0, 2.0, infinity, notANumber}) {
    EXPECT_EQ(Velocity::unitInterval(unit).midi1Value().value(), integerFromUnitInterval<7>(unit));
    EXPECT_EQ(Velocity::unitInterval(unit).midi2Value(), integerFromUnitInterval<16>(unit));
    EXPECT_EQ(NoteValue::unitInterval(unit).midi2Value(), integerFromUnitInterval<32>(unit));
  }
}

TEST(ChanVoiceValueTest, KeepsANumberAsGivenUntilItIsValidated) {
  EXPECT_NE(Velocity::unitInterval(2.0), Velocity::unitInterval(1.0));
  EXPECT_EQ(Velocity::Validated(Velocity::unitInterval(2.0)).value(), Velocity::unitInterval(1.0));
  Bend::Validated field = Bend::bipolarUnitInterval(-7.0);
  EXPECT_EQ(field.value(), Bend::bipolarUnitInterval(-1.0));
  field = Bend::unitInterval(notANumber);
  EXPECT_EQ(field.value(), Bend::unitInterval(0.0));
  field = Bend::midi1(5_u14);
  EXPECT_EQ(field.value().form(), ChanVoiceValueForm::midi1);
}

TEST(ChanVoiceValueTest, ComparesInTheRightHandForm) {
  EXPECT_EQ(Velocity::midi2(0xFFFF), Velocity::unitInterval(1.0));
  EXPECT_EQ(Velocity::unitInterval(1.0), Velocity::midi2(0xFFFF));
  EXPECT_EQ(Velocity::unitInterval(0.501), Velocity::midi1(64_u7));
  EXPECT_EQ(Velocity::midi1(64_u7), Velocity::unitInterval(0.501));
  EXPECT_NE(Velocity::midi2(0x8000), Velocity::unitInterval(0.501));
  // At 7 bits they're the same, at 16 they aren't.
  EXPECT_TRUE(Velocity::midi2(0x8001) == Velocity::midi1(64_u7));
  EXPECT_FALSE(Velocity::midi1(64_u7) == Velocity::midi2(0x8001));
  EXPECT_TRUE(Bend::midi2(0x80000001) == Bend::midi1(8192_u14));
  EXPECT_FALSE(Bend::midi1(8192_u14) == Bend::midi2(0x80000001));
  EXPECT_EQ(Bend::bipolarUnitInterval(0.5), Bend::unitInterval(0.75));
  EXPECT_EQ(Bend::unitInterval(0.75), Bend::bipolarUnitInterval(0.5));
  EXPECT_EQ(Bend::bipolarUnitInterval(0.00001), Bend::midi1(8192_u14));
  EXPECT_NE(Bend::midi2(0x80000000), Bend::bipolarUnitInterval(0.00001));
}

TEST(ChanVoiceValueTest, HashesTheFormAndWhatItHolds) {
  const std::hash<Velocity> hash;
  EXPECT_EQ(hash(Velocity::midi1(64_u7)), hash(Velocity::midi1(64_u7)));
  EXPECT_NE(hash(Velocity::midi1(64_u7)), hash(Velocity::midi2(64)));
  EXPECT_NE(hash(Velocity::midi2(0xFFFF)), hash(Velocity::unitInterval(1.0)));
  EXPECT_EQ(hash(Velocity::unitInterval(0.0)), hash(Velocity::unitInterval(-0.0)));
}

TEST(ChanVoiceValueTest, TellsItsFormInItsText) {
  EXPECT_EQ(Velocity::midi1(64_u7).description(), "midi1(64)");
  EXPECT_EQ(Amount::midi2(0xFFFFFFFF).description(), "midi2(4294967295)");
  EXPECT_EQ(NoteValue::unitInterval(0.5).description(), "unitInterval(0.5)");
  EXPECT_EQ(Bend::bipolarUnitInterval(-0.25).description(), "bipolarUnitInterval(-0.25)");
}

}  // namespace
}  // namespace midikit::core

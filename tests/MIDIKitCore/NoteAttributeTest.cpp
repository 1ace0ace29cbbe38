#include "MIDIKitCore/controllers/NoteAttribute.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>

#include "MIDIKitCore/numbers/Pitch.hpp"

namespace midikit::core {
namespace {

using namespace literals;

TEST(Pitch7_9Test, HasThreeFormsOfEqualContent) {
  for (std::uint32_t word = 0; word <= 0xFFFF; ++word) {
    const auto encoded = static_cast<std::uint16_t>(word);
    const Pitch7_9 pitch = Pitch7_9::fromEncoded(encoded);
    ASSERT_EQ(pitch.coarse.value(), word / 512);
    ASSERT_EQ(pitch.fine.value(), word % 512);
    ASSERT_EQ(pitch.encoded(), word);
    const BytePair bytes = pitch.bytePair();
    ASSERT_EQ(bytes.msb, pitch.coarse.value() * 2 + pitch.fine.value() / 256);
    ASSERT_EQ(bytes.lsb, pitch.fine.value() % 256);
    ASSERT_EQ(Pitch7_9::fromBytePair(bytes), pitch);
    ASSERT_EQ(pitch.semitones(), pitch.coarse.value() + pitch.fine.value() * 0.001953125);
    ASSERT_EQ(Pitch7_9::fromSemitones(pitch.semitones()), pitch);
  }
}

TEST(Pitch7_9Test, RoundsANumberOfSemitones) {
  const double infinity = std::numeric_limits<double>::infinity();
  const struct {
    double semitones;
    int coarse;
    int fine;
  } rows[] = {{60.5, 60, 256},
              {60.0 + 0.5 / 512, 60, 1},
              {60.0 + 0.49 / 512, 60, 0},
              {std::nextafter(0.5 / 512, 0.0), 0, 0},
              {60.0 + 511.4 / 512, 60, 511},
              {60.0 + 511.5 / 512, 61, 0},
              {127.0 + 511.9 / 512, 127, 511},
              {200.0, 127, 511},
              {infinity, 127, 511},
              {-1.0, 0, 0},
              {-infinity, 0, 0},
              {std::numeric_limits<double>::quiet_NaN(), 0, 0}};
  for (const auto& [semitones, coarse, fine] : rows) {
    EXPECT_EQ(Pitch7_9::fromSemitones(semitones), (Pitch7_9{UInt7(coarse), UInt9(fine)})) << semitones;
  }
}

TEST(Pitch7_25Test, HasTheSemitonesInTheUpperSevenBits) {
  for (const std::uint32_t word : {0U, 1U, 0x1FFFFFFU, 0x2000000U, 0x79000000U, 0xFFFFFFFFU}) {
    const Pitch7_25 pitch = Pitch7_25::fromEncoded(word);
    EXPECT_EQ(pitch.coarse.value(), word / 0x2000000);
    EXPECT_EQ(pitch.fine.value(), word % 0x2000000);
    EXPECT_EQ(pitch.encoded(), word);
  }
}

TEST(NoteAttributeTest, HasAWireFormATextAndAnIdentityByCase) {
  const struct {
    NoteAttribute attribute;
    std::uint8_t type;
    std::uint16_t data;
    std::string text;
  } rows[] = {
      {NoteAttribute::none(), 0, 0, "none"},
      {NoteAttribute::manufacturerSpecific(5), 1, 5, "manufacturerSpecific(5)"},
      {NoteAttribute::profileSpecific(0xFFFF), 2, 0xFFFF, "profileSpecific(65535)"},
      {NoteAttribute::pitch7_9({60_u7, 256_u9}), 3, 0x7900, "pitch7.9(60, fine: 256)"},
      {NoteAttribute::undefined(9, 7), 9, 7, "undefined(9, data: 7)"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    EXPECT_EQ(row.attribute.attributeType(), row.type);
    EXPECT_EQ(row.attribute.data(), row.data);
    EXPECT_EQ(row.attribute.description(), row.text);
    EXPECT_EQ(NoteAttribute::fromWire(row.type, row.data), row.attribute);
    for (const auto& other : rows) {
      EXPECT_EQ(row.attribute == other.attribute, &row == &other) << other.text;
    }
  }
  EXPECT_EQ(NoteAttribute::fromWire(0, 5), NoteAttribute::none());
  for (int type = 4; type <= 255; ++type) {
    const auto byte = static_cast<std::uint8_t>(type);
    EXPECT_EQ(NoteAttribute::fromWire(byte, 5), NoteAttribute::undefined(byte, 5));
  }
  EXPECT_NE(NoteAttribute::undefined(1, 5), NoteAttribute::manufacturerSpecific(5));
  EXPECT_EQ(NoteAttribute::pitch7_9({60_u7, 256_u9}).pitch(), (Pitch7_9{60_u7, 256_u9}));
  EXPECT_FALSE(NoteAttribute::undefined(3, 5).pitch());
}

}  // namespace
}  // namespace midikit::core

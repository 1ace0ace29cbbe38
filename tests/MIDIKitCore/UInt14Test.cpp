#include "MIDIKitCore/numbers/UInt.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <limits>

#include "MIDIKitCore/ValueScaling.hpp"

namespace midikit::core {
namespace {

using namespace literals;

TEST(UInt14Test, SplitsIntoHalvesAndJoinsThemAgain) {
  for (int value = 0; value <= 0x3FFF; ++value) {
    const UInt14 integer(value);
    const BytePair bytes = integer.bytePair();
    ASSERT_EQ(bytes.msb * 128 + bytes.lsb, value);
    ASSERT_TRUE(bytes.msb < 128 && bytes.lsb < 128);
    const UInt7Pair pair = integer.uint7Pair();
    ASSERT_EQ(pair, (UInt7Pair{.msb = UInt7(value / 128), .lsb = UInt7(value % 128)}));
    ASSERT_EQ(UInt14(bytes), integer);
    ASSERT_EQ(UInt14(pair), integer);
    ASSERT_EQ(*UInt7Pair::decoded(pair.encoded()), pair);
  }
}

TEST(UInt14Test, IgnoresTheHighBitOfEachByte) {
  for (int byte = 0; byte <= 0xFF; ++byte) {
    const auto value = static_cast<std::uint8_t>(byte);
    ASSERT_EQ(UInt14(BytePair{.msb = value, .lsb = 0xFF}).value(), (byte & 0x7F) * 128 + 127);
    ASSERT_EQ(UInt14(BytePair{.msb = 0x80, .lsb = value}).value(), byte & 0x7F);
  }
}

TEST(UInt14Test, ReadsAsABipolarValueAsAnyOtherWidthDoes) {
  for (std::uint32_t value = 0; value <= 0x3FFF; ++value) {
    const double bipolar = bipolarIntervalFromInteger<14>(value);
    ASSERT_EQ(UInt14(value).bipolarValue(), bipolar);
    ASSERT_EQ(UInt14::fromBipolarValue(bipolar).value(), integerFromBipolarInterval<14>(bipolar));
  }
  const double infinity = std::numeric_limits<double>::infinity();
  for (const double bipolar : {1.0, -1.0, 2.0, -2.0, infinity, -infinity, -0.0, 0.9999, -0.9999, 0.5, -0.5,
                               1e-5, -1e-5, std::numeric_limits<double>::quiet_NaN()}) {
    ASSERT_EQ(UInt14::fromBipolarValue(bipolar).value(), integerFromBipolarInterval<14>(bipolar)) << bipolar;
  }
}

TEST(UInt7PairTest, OrdersByItsNumericValue) {
  EXPECT_LT((UInt7Pair{.msb = 1_u7, .lsb = 127_u7}), (UInt7Pair{.msb = 2_u7, .lsb = 0_u7}));
  EXPECT_LT((BytePair{.msb = 1, .lsb = 2}), (BytePair{.msb = 1, .lsb = 3}));
  EXPECT_NE(std::hash<BytePair>{}({.msb = 1, .lsb = 2}), std::hash<BytePair>{}({.msb = 2, .lsb = 1}));
}

TEST(UInt7PairTest, ShowsBothHalvesInHexadecimal) {
  EXPECT_EQ((UInt7Pair{.msb = 127_u7, .lsb = 5_u7}).description(), "[msb: 0x7F, lsb: 0x05]");
}

TEST(UInt7PairTest, RefusesASerialisedHalfOfMoreThanSevenBits) {
  for (const BytePair encoded :
       {BytePair{.msb = 128, .lsb = 0}, {.msb = 0, .lsb = 255}, {.msb = 200, .lsb = 200}}) {
    const auto pair = UInt7Pair::decoded(encoded);
    ASSERT_FALSE(pair);
    EXPECT_EQ(pair.error().description(), "Encoded value is not a valid UInt7.");
  }
}

}  // namespace
}  // namespace midikit::core

#include "MIDIKitCore/numbers/Int7.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <bitset>
#include <cstdint>
#include <functional>
#include <limits>
#include <string>

namespace midikit::core {
namespace {

TEST(Int7Test, TakesWhatIsInRangeFromEveryIntegerType) {
  for (int source = -300; source <= 300; ++source) {
    const bool isInRange = source >= -64 && source <= 63;
    const auto exact = Int7::exactly(source);
    ASSERT_EQ(exact.has_value(), isInRange) << source;
    ASSERT_EQ(Int7::clamping(source).value(), std::clamp(source, -64, 63));
    if (isInRange) {
      ASSERT_EQ(exact->value(), source);
      ASSERT_EQ(Int7(source), *exact);
      ASSERT_EQ(static_cast<long>(*exact), source);
    }
  }
  EXPECT_EQ(Int7::clamping(std::numeric_limits<std::uint64_t>::max()), Int7::maximum());
  EXPECT_EQ(Int7::clamping(std::numeric_limits<std::int64_t>::min()), Int7::minimum());
  EXPECT_FALSE(Int7::exactly(std::uint8_t{64}));
}

TEST(Int7Test, ReadsAndGivesEveryPattern) {
  for (int pattern = 0; pattern <= 0xFF; ++pattern) {
    const int low = pattern % 128;
    const auto integer = Int7::fromBitPattern(static_cast<std::uint8_t>(pattern));
    ASSERT_EQ(integer.value(), low < 64 ? low : low - 128) << pattern;
    ASSERT_EQ(integer.bitPattern(), low);
    ASSERT_EQ(integer.uint7BitPattern(), UInt7(low));
    ASSERT_EQ(Int7::fromBitPattern(UInt7(low)), integer);
    ASSERT_EQ(integer.sixBitStorage(), low % 64);
    ASSERT_EQ(integer.isNegative(), low >= 64);
    ASSERT_EQ(integer.binaryDescription(), "0b" + std::bitset<7>(static_cast<unsigned>(low)).to_string());
    ASSERT_EQ(integer.description(), std::to_string(low < 64 ? low : low - 128));
  }
}

TEST(Int7Test, OrdersAndHashesByTheSignedValue) {
  for (int a = -64; a <= 63; ++a) {
    for (int b = -64; b <= 63; ++b) {
      ASSERT_EQ(Int7(a) <=> Int7(b), a <=> b);
      ASSERT_EQ(std::hash<Int7>{}(Int7(a)) == std::hash<Int7>{}(Int7(b)), a == b);
    }
  }
}

TEST(Int7Test, ReadsBackWhatItWroteAndNothingElse) {
  for (int encoded = -128; encoded <= 127; ++encoded) {
    const auto integer = Int7::decoded(static_cast<std::int8_t>(encoded));
    ASSERT_EQ(bool{integer}, encoded >= -64 && encoded <= 63);
    if (integer) {
      ASSERT_EQ(integer->encoded(), encoded);
    } else {
      ASSERT_EQ(integer.error().description(), "Encoded value is not a valid Int7.");
    }
  }
}

TEST(Int7DeathTest, StopsTheProgramWhenTheContractIsBroken) {
  volatile int source = 64;
  EXPECT_DEATH((void)Int7(+source), "Int7 integer overflowed");
  source = -65;
  EXPECT_DEATH((void)Int7(+source), "Int7 integer underflowed");
}

}  // namespace
}  // namespace midikit::core

#include "MIDIKitCore/ValueScaling.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

namespace midikit::core {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
// The next double above 0.5 but for some 20000 steps.
constexpr double aboveHalf = 0.5000000000023282;

/// Min-Center-Max as the standard tells it, one repetition after the other.
std::uint32_t repeatedUp(std::uint32_t value, int from, int to) {
  std::uint64_t result = std::uint64_t{value} << (to - from);
  if (value <= std::uint32_t{1} << (from - 1)) {
    return static_cast<std::uint32_t>(result);
  }
  const int below = from - 1;
  const std::uint64_t low = value & ((std::uint32_t{1} << below) - 1);
  const int shift = to - from - below;
  for (std::uint64_t repeat = shift > 0 ? low << shift : low >> -shift; repeat != 0; repeat >>= below) {
    result |= repeat;
  }
  return static_cast<std::uint32_t>(result);
}

template <unsigned from, unsigned to>
void expectScaledUp() {
  for (std::uint32_t value = 0; value <= maximumOf<from>; ++value) {
    const std::uint32_t scaled = scaledUp<from, to>(value);
    ASSERT_EQ(scaled, repeatedUp(value, from, to)) << value;
    ASSERT_EQ((scaledDown<to, from>(scaled)), value);
  }
  EXPECT_EQ((scaledUp<from, to>(centreOf<from>)), centreOf<to>);
  EXPECT_EQ((scaledUp<from, to>(maximumOf<from>)), maximumOf<to>);
}

TEST(ValueScalingTest, ScalesUpByRepeatingBits) {
  expectScaledUp<7, 16>();
  expectScaledUp<7, 32>();
  expectScaledUp<14, 32>();
  EXPECT_EQ((scaledUp<7, 16>(65)), 0x8208U);
}

TEST(ValueScalingTest, ScalesDownByDroppingBits) {
  for (std::uint32_t value = 0; value <= 0xFFFF; ++value) {
    ASSERT_EQ((scaledDown<16, 7>(value)), value / 512);
    ASSERT_EQ((scaledDown<32, 7>(value << 16 | 0xFFFF)), value / 512);
    ASSERT_EQ((scaledDown<32, 14>(value << 16 | 0xFFFF)), value / 4);
  }
}

/// Values to look at: all of them, or at 32 bits the edges and some between them.
template <unsigned width>
std::vector<std::uint32_t> valuesOf() {
  std::vector<std::uint32_t> values;
  constexpr std::uint64_t step = width == 32 ? 65521 : 1;
  for (std::uint64_t value = 0; value <= maximumOf<width>; value += step) {
    values.push_back(static_cast<std::uint32_t>(value));
  }
  for (const std::uint32_t value :
       {centreOf<width> - 1, centreOf<width>, centreOf<width> + 1, maximumOf<width> - 1, maximumOf<width>}) {
    values.push_back(value);
  }
  return values;
}

template <unsigned width>
void expectUnitInterval() {
  const double upperFactor = std::exp2(width) - 2.0;
  for (const std::uint32_t value : valuesOf<width>()) {
    const double unit = unitIntervalFromInteger<width>(value);
    if (value <= centreOf<width>) {
      ASSERT_EQ(unit, std::ldexp(value, -static_cast<int>(width))) << value;
    } else if (value < maximumOf<width>) {
      ASSERT_EQ(unit, (value - centreOf<width>) / upperFactor + aboveHalf) << value;
    }
    ASSERT_EQ(integerFromUnitInterval<width>(unit), value) << "doesn't read back";
  }
  EXPECT_EQ(unitIntervalFromInteger<width>(maximumOf<width>), 1.0);
  EXPECT_EQ(integerFromUnitInterval<width>(0.5), centreOf<width>);
  EXPECT_EQ(integerFromUnitInterval<width>(0.75),
            centreOf<width> + static_cast<std::uint32_t>(0.25 * upperFactor));
  for (const double tooLow : {-0.0, -1e-300, -1.0, -infinity, notANumber}) {
    EXPECT_EQ(integerFromUnitInterval<width>(tooLow), 0U) << tooLow;
  }
  for (const double tooHigh : {1.0, 2.0, 1e300, infinity}) {
    EXPECT_EQ(integerFromUnitInterval<width>(tooHigh), maximumOf<width>) << tooHigh;
  }
}

TEST(ValueScalingTest, ScalesEachHalfOfTheUnitIntervalByItself) {
  expectUnitInterval<7>();
  expectUnitInterval<14>();
  expectUnitInterval<16>();
  expectUnitInterval<32>();
  EXPECT_EQ(integerFromUnitInterval<7>(0.75), 95U);
  EXPECT_EQ(integerFromUnitInterval<16>(std::nextafter(0.5, 0.0)), 0x7FFFU);
  EXPECT_EQ(integerFromUnitInterval<32>(std::nextafter(1.0, 0.0)), 0xFFFFFFFEU);
}

template <unsigned width>
void expectBipolar() {
  const double below = centreOf<width>;
  const double above = centreOf<width> - 1.0;
  for (const std::uint32_t value : valuesOf<width>()) {
    const double distance = static_cast<double>(value) - centreOf<width>;
    const double bipolar = bipolarIntervalFromInteger<width>(value);
    ASSERT_EQ(bipolar, distance / (distance > 0 ? above : below)) << value;
    // Truncation may take it one step toward the centre.
    const std::uint32_t back = integerFromBipolarInterval<width>(bipolar);
    ASSERT_TRUE(back == value || (value > centreOf<width> && back == value - 1)) << value;
  }
  EXPECT_EQ(integerFromBipolarInterval<width>(0.0), centreOf<width>);
  EXPECT_EQ(integerFromBipolarInterval<width>(-0.5), centreOf<width> / 2);
  EXPECT_EQ(integerFromBipolarInterval<width>(notANumber), centreOf<width>);
  for (const double tooLow : {-1.0, -2.0, -infinity}) {
    EXPECT_EQ(integerFromBipolarInterval<width>(tooLow), 0U);
  }
  for (const double tooHigh : {1.0, 2.0, infinity}) {
    EXPECT_EQ(integerFromBipolarInterval<width>(tooHigh), maximumOf<width>);
  }
}

TEST(ValueScalingTest, ScalesEachSideOfTheBipolarIntervalByItself) {
  expectBipolar<14>();
  expectBipolar<32>();
  EXPECT_EQ(integerFromBipolarInterval<14>(0.5), 12287U);
  EXPECT_EQ(integerFromBipolarInterval<14>(0.9999), 16382U);
  EXPECT_EQ(integerFromBipolarInterval<14>(-0.9999), 1U);
}

}  // namespace
}  // namespace midikit::core

#include "MIDIKitCore/numbers/BoundedInteger.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "MIDIKitCore/numbers/UInt.hpp"

namespace midikit::core {
namespace {

using namespace literals;

template <class Type, std::int64_t Maximum, class Storage>
struct Row {
  using Integer = Type;
  static constexpr std::int64_t maximum = Maximum;

  static_assert(std::is_same_v<typename Integer::storage_type, Storage>);
  static_assert(sizeof(Integer) == sizeof(Storage) && std::is_trivially_copyable_v<Integer>);
  static_assert(Integer().value() == 0 && Integer::minimum().value() == 0);
  static_assert(std::numeric_limits<Integer>::max() == Integer::maximum());
  static_assert(Integer::maximum().value() == Maximum);
  static_assert(!std::is_convertible_v<int, Integer> && !std::is_convertible_v<Integer, int>);
};

template <class Table>
class BoundedIntegerTest : public testing::Test {};

using Rows = testing::Types<Row<UInt4, 15, std::uint8_t>, Row<UInt7, 127, std::uint8_t>,
                            Row<UInt9, 511, std::uint16_t>, Row<UInt14, 16383, std::uint16_t>,
                            Row<UInt25, 33554431, std::uint32_t>>;
TYPED_TEST_SUITE(BoundedIntegerTest, Rows);

/// Each of the integer forms on one source, told by plain arithmetic in 64 bits.
template <class Table, class Source>
void expectForms(Source source) {
  using Integer = typename Table::Integer;
  const bool isBelow = std::is_signed_v<Source> && source < Source{0};
  const bool isAbove = !isBelow && static_cast<std::uint64_t>(source) > std::uint64_t{Table::maximum};
  const auto expected = isBelow ? 0 : isAbove ? Table::maximum : static_cast<std::int64_t>(source);
  const auto exact = Integer::exactly(source);
  ASSERT_EQ(exact.has_value(), !isBelow && !isAbove) << +source;
  ASSERT_EQ(Integer::clamping(source).value(), expected) << +source;
  if (exact) {
    ASSERT_EQ(exact->value(), expected);
    ASSERT_EQ(Integer(source), *exact);
    ASSERT_EQ(Integer::truncating(source), *exact);
  }
}

template <class Table, class... Sources>
void expectFormsAbout(std::int64_t base, std::int64_t distance) {
  for (std::int64_t source = base - distance; source <= base + distance; ++source) {
    (expectForms<Table>(static_cast<Sources>(source)), ...);
  }
}

TYPED_TEST(BoundedIntegerTest, TakesWhatIsInRangeFromEveryIntegerType) {
  expectFormsAbout<TypeParam, char, std::int8_t, std::uint8_t, std::int16_t, std::uint16_t>(0, 1 << 16);
  for (const std::int64_t base : {std::int64_t{0}, TypeParam::maximum, std::int64_t{1} << 32}) {
    expectFormsAbout<TypeParam, std::int64_t, std::uint64_t, std::int32_t, std::uint32_t>(base, 2);
  }
  expectForms<TypeParam>(std::numeric_limits<std::int64_t>::min());
  expectForms<TypeParam>(std::numeric_limits<std::int64_t>::max());
}

template <class Integer, class Float>
void expectFloatingForms() {
  const auto maximum = static_cast<Float>(Integer::maximum().value());
  ASSERT_EQ(Integer::template maximum<Float>(), maximum);
  for (const Float source : {Float{0}, -Float{0}, Float{0.75}, Float{1.5}, maximum / 2}) {
    ASSERT_EQ(Integer(source).value(), std::trunc(source));
    ASSERT_EQ(Integer::exactly(source), Integer(source));
  }
  const auto infinity = std::numeric_limits<Float>::infinity();
  for (const Float source : {Float{-0.25}, Float{-1}, -infinity, maximum + maximum / 100, maximum + 1,
                             infinity, std::numeric_limits<Float>::quiet_NaN()}) {
    ASSERT_FALSE(Integer::exactly(source)) << source;
  }
}

TYPED_TEST(BoundedIntegerTest, TruncatesFractionsTowardZeroWithinTheRange) {
  using Integer = typename TypeParam::Integer;
  expectFloatingForms<Integer, float>();
  expectFloatingForms<Integer, double>();
  expectFloatingForms<Integer, long double>();
  ASSERT_EQ(Integer(static_cast<double>(TypeParam::maximum)), Integer::maximum());
  ASSERT_FALSE(Integer::exactly(static_cast<double>(TypeParam::maximum) + 0.25));
  // The nearest float to 33554431 is 33554432, which no UInt25 holds.
  EXPECT_FALSE(UInt25::exactly(33554432.0F));
  EXPECT_EQ(UInt25::exactly(33554430.0F), 33554430_u25);
}

/// Every value of a small type; of a large one those about each power of two.
template <class Integer>
std::vector<Integer> values() {
  std::vector<Integer> all;
  const std::int64_t maximum = Integer::maximum().value();
  for (std::int64_t value = 0; value <= maximum; ++value) {
    if (maximum <= 0x3FFF || (value & (value - 1)) == 0 || (value & (value + 1)) == 0) {
      all.push_back(Integer(value));
    }
  }
  return all;
}

TYPED_TEST(BoundedIntegerTest, ReadsBackWhatItWroteAndInItsTextForms) {
  using Integer = typename TypeParam::Integer;
  const std::string name(Integer::typeName);
  for (const Integer integer : values<Integer>()) {
    ASSERT_EQ(*Integer::decoded(integer.encoded()), integer);
    const auto digits = std::to_string(integer.value());
    ASSERT_EQ(integer.description(), digits);
    ASSERT_EQ(integer.debugDescription(), name + "(" + digits + ")");
    ASSERT_EQ(~~integer, integer);
    ASSERT_EQ((~integer).value(), TypeParam::maximum - integer.value());
    ASSERT_EQ(integer.signum(), integer.value() == 0 ? 0 : 1);
    ASSERT_EQ(static_cast<std::int64_t>(integer), integer.value());
    ASSERT_EQ(UInt25(integer).value(), integer.value());
  }
  const auto tooLarge = Integer::decoded(static_cast<typename Integer::storage_type>(TypeParam::maximum + 1));
  ASSERT_FALSE(tooLarge);
  EXPECT_EQ(tooLarge.error().description(), "Encoded value is not a valid " + name + ".");
}

template <class Integer>
void expectArithmetic(Integer a, Integer b) {
  const std::int64_t x = a.value();
  const std::int64_t y = b.value();
  const std::int64_t maximum = Integer::maximum().value();
  const auto expect = [&](std::int64_t expected, Integer plain, auto assign) {
    Integer assigned = a;
    ASSERT_EQ(plain.value(), expected);
    ASSERT_EQ(assign(assigned), plain);
    ASSERT_EQ(assigned, plain);
  };
  expect(x & y, a & b, [b](Integer& it) { return it &= b; });
  expect(x | y, a | b, [b](Integer& it) { return it |= b; });
  expect(x ^ y, a ^ b, [b](Integer& it) { return it ^= b; });
  if (x + y <= maximum) {
    expect(x + y, a + b, [b](Integer& it) { return it += b; });
    ASSERT_EQ(a.advanced(y), a + b);
  }
  if (x >= y) {
    expect(x - y, a - b, [b](Integer& it) { return it -= b; });
  }
  if (x * y <= maximum) {
    expect(x * y, a * b, [b](Integer& it) { return it *= b; });
  }
  if (y != 0) {
    expect(x / y, a / b, [b](Integer& it) { return it /= b; });
    expect(x % y, a % b, [b](Integer& it) { return it %= b; });
  }
  ASSERT_EQ(a.distanceTo(b), y - x);
  if (x < y) {
    auto step = a;
    ASSERT_TRUE(step++ == a && step-- > a && ++step > a && --step == a);
  }
  ASSERT_EQ(a == b, x == y);
  ASSERT_EQ(a <=> b, x <=> y);
  ASSERT_EQ(std::hash<Integer>{}(a) == std::hash<Integer>{}(b), x == y);
}

TYPED_TEST(BoundedIntegerTest, CalculatesLikePlainIntegersWithinTheRange) {
  using Integer = typename TypeParam::Integer;
  const auto all = values<Integer>();
  const std::size_t stride = all.size() <= 512 ? 1 : 61;
  for (std::size_t first = 0; first < all.size(); first += stride) {
    for (std::size_t second = 0; second < all.size(); second += stride) {
      expectArithmetic(all[first], all[second]);
    }
  }
}

TYPED_TEST(BoundedIntegerTest, ShiftsItsStorage) {
  using Integer = typename TypeParam::Integer;
  constexpr int width = std::numeric_limits<typename Integer::storage_type>::digits;
  for (const Integer integer : values<Integer>()) {
    const std::uint64_t bits = integer.value();
    for (int count = 0; count <= width + 1; ++count) {
      ASSERT_EQ((integer >> count).value(), bits >> count);
      ASSERT_EQ((integer << -count).value(), bits >> count);
      const auto shifted = (bits << count) & ((std::uint64_t{1} << width) - 1);
      if (shifted <= std::uint64_t{TypeParam::maximum}) {
        ASSERT_EQ((integer << count).value(), shifted);
        ASSERT_EQ((integer >> -count).value(), shifted);
      }
    }
    Integer assigned = integer;
    ASSERT_EQ((assigned >>= 1) <<= 1, integer & ~Integer(1));
    ASSERT_EQ(integer << std::numeric_limits<std::int64_t>::max(), Integer(0));
    ASSERT_EQ(integer << std::numeric_limits<std::int64_t>::min(), Integer(0));
    ASSERT_EQ(integer >> std::numeric_limits<std::uint64_t>::max(), Integer(0));
  }
}

TEST(BoundedIntegerFormsTest, HasTheUpperMiddleValueForItsMidpoint) {
  static_assert(UInt7::midpoint() == 64_u7 && UInt14::midpoint() == 8192_u14 &&
                UInt25::midpoint() == 16777216_u25);
  static_assert(UInt7::maximum<std::int8_t>() == 127 && UInt7::minimum<std::int64_t>() == 0);
  static_assert(UInt14::minimum<std::uint8_t>() == 0);
  EXPECT_EQ(UInt7::truncating(0x17F), 127_u7);
  EXPECT_EQ(UInt25::truncating(-0xFFFFFFFFLL), 1_u25);
}

TEST(BoundedIntegerDeathTest, StopsTheProgramWhenTheContractIsBroken) {
  static volatile int source = 0;
  const auto from = [](int value) {
    source = value;
    return +source;
  };
  const auto nan = std::numeric_limits<double>::quiet_NaN();
  struct Breach {
    std::function<void()> operation;
    std::string_view reason;
  };
  const std::vector<Breach> breaches{
      {[&] { (void)UInt7(from(128)); }, "UInt7 integer overflowed"},
      {[&] { (void)UInt7(from(-1)); }, "UInt7 integer underflowed"},
      {[&] { (void)UInt7(128.0); }, "UInt7 integer overflowed"},
      {[&] { (void)UInt7(-0.5); }, "UInt7 integer underflowed"},
      {[&] { (void)UInt7(nan); }, "UInt7 integer overflowed"},
      {[&] { (void)UInt25(33554432.0F); }, "UInt25 integer overflowed"},
      {[&] { (void)UInt4(UInt7(from(16))); }, "UInt4 integer overflowed"},
      {[&] { (void)UInt7::truncating(from(0x1FF)); }, "UInt7 integer overflowed"},
      {[&] { (void)(UInt7(from(64)) + 64_u7); }, "UInt7 integer overflowed"},
      {[&] { (void)(UInt7(from(1)) - 2_u7); }, "UInt7 integer underflowed"},
      {[&] { (void)(UInt7(from(16)) * 16_u7); }, "UInt7 integer overflowed"},
      {[&] { (void)(UInt25::maximum() * UInt25(from(33554431))); }, "UInt25 integer overflowed"},
      {[&] { (void)(UInt7(from(64)) << 1); }, "UInt7 integer overflowed"},
      {[&] { (void)(UInt7(from(64)) >> -1); }, "UInt7 integer overflowed"},
      {[&] { (void)UInt14(5).advanced(from(-1)); }, "UInt14 integer underflowed"},
      {[&] { (void)(1_u9 / UInt9(from(0))); }, "UInt9 integer divided by zero"},
      {[&] { (void)(1_u9 % UInt9(from(0))); }, "UInt9 integer divided by zero"},
  };
  for (const auto& [operation, reason] : breaches) {
    EXPECT_DEATH(operation(), std::string(reason));
  }
}

}  // namespace
}  // namespace midikit::core

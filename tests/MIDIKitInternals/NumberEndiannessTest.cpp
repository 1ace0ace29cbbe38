#include "MIDIKitInternals/NumberEndianness.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <vector>

namespace midikit::internals {
namespace {

using enum NumberEndianness;

TEST(NumberEndianness, ChoosesTheOrderOfTheBytes) {
  constexpr std::array<std::uint8_t, 4> bytes{0x12, 0x34, 0x56, 0xF8};
  static_assert(integerFromBytes<std::uint32_t>(bytes, bigEndian) == 0x123456F8);
  static_assert(integerFromBytes<std::uint32_t>(bytes, littleEndian) == 0xF8563412);
  static_assert(bytesOf<std::uint32_t>(0x123456F8, bigEndian) == bytes);
  static_assert(bytesOf<std::uint32_t>(0xF8563412, littleEndian) == bytes);
}

TEST(NumberEndianness, ThePlatformDefaultIsWhatMemoryHolds) {
  const std::uint32_t number = 0x123456F8;
  std::array<std::uint8_t, sizeof number> memory{};
  std::memcpy(memory.data(), &number, sizeof number);
  EXPECT_EQ(bytesOf(number), memory);
  EXPECT_EQ(integerFromBytes<std::uint32_t>(memory), number);
}

TEST(NumberEndianness, IntegersOfEveryWidthComeBack) {
  const auto comesBack = [](auto number) {
    for (const auto endianness : {platformDefault, littleEndian, bigEndian}) {
      EXPECT_EQ(integerFromBytes<decltype(number)>(bytesOf(number, endianness), endianness), number);
    }
  };
  for (int number = -0x8000; number <= 0xFFFF; ++number) {
    comesBack(static_cast<std::int8_t>(number));
    comesBack(static_cast<std::int16_t>(number));
    comesBack(static_cast<std::uint16_t>(number));
    comesBack(static_cast<std::int64_t>(number) * 0x123456789AB);
  }
}

TEST(NumberEndianness, AWrongCountOfBytesGivesNothing) {
  for (std::size_t size = 0; size <= 9; ++size) {
    const std::vector<std::uint8_t> bytes(size, 0);
    EXPECT_EQ(integerFromBytes<std::uint8_t>(bytes).has_value(), size == 1);
    EXPECT_EQ(integerFromBytes<std::uint32_t>(bytes).has_value(), size == 4);
    EXPECT_EQ(integerFromBytes<std::int64_t>(bytes).has_value(), size == 8);
  }
}

}  // namespace
}  // namespace midikit::internals

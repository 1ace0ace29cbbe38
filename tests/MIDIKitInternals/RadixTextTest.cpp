#include "MIDIKitInternals/RadixText.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <limits>
#include <string>
#include <vector>

namespace midikit::internals {
namespace {

TEST(RadixText, EveryByteReadsBackAsItself) {
  for (int byte = 0; byte <= 0xFF; ++byte) {
    const auto number = static_cast<std::uint8_t>(byte);
    EXPECT_EQ(std::stoi(hexText(number), nullptr, 16), byte);
    EXPECT_EQ(std::stoi(binaryText(number), nullptr, 2), byte);
  }
}

TEST(RadixText, WidthCountsTheDigitsAlone) {
  EXPECT_EQ(hexText(0), "0");
  EXPECT_EQ(hexText(0xABCDEF), "ABCDEF");
  EXPECT_EQ(hexText(0x7F, {.width = 4}), "007F");
  EXPECT_EQ(hexText(0x7F, {.width = 1}), "7F");
  EXPECT_EQ(hexText(7, {.width = 2, .prefix = true}), "0x07");
  EXPECT_EQ(binaryText(5, {.prefix = true}), "0b101");
  EXPECT_EQ(binaryText(5, {.width = 7, .prefix = true}), "0b0000101");
}

TEST(RadixText, NegativeNumbersHaveASign) {
  EXPECT_EQ(hexText(-15), "-F");
  EXPECT_EQ(hexText(std::int8_t{-1}, {.width = 2, .prefix = true}), "-0x01");
  EXPECT_EQ(hexText(std::numeric_limits<std::int64_t>::min()), "-8000000000000000");
  EXPECT_EQ(hexText(std::numeric_limits<std::uint64_t>::max()), "FFFFFFFFFFFFFFFF");
}

TEST(RadixText, ListsAreJoined) {
  const std::vector<std::uint8_t> message{0xF0, 0x7, 0xF7};
  EXPECT_EQ(hexText(message), "F0 7 F7");
  EXPECT_EQ(hexText(message, {.width = 2, .prefix = true}, "-"), "0xF0-0x07-0xF7");
  EXPECT_EQ(bracketedHexText(message), "[0xF0, 0x7, 0xF7]");
  EXPECT_EQ(bracketedHexText(message, 2), "[0xF0, 0x07, 0xF7]");
  EXPECT_EQ(hexText(std::vector<int>{}), "");
  EXPECT_EQ(bracketedHexText(std::vector<int>{}), "[]");
}

}  // namespace
}  // namespace midikit::internals

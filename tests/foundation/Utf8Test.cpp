#include "foundation/text/Utf8.hpp"

#include <gtest/gtest.h>

#include <string>

namespace karvex::foundation {
namespace {

bool isScalar(char32_t value) {
  return value <= 0x10FFFF && (value < 0xD800 || value > 0xDFFF);
}

TEST(Utf8Test, EveryCharacterAndNoOtherValueHasAnEncoding) {
  for (char32_t value = 0; value <= 0x110010; ++value) {
    const auto bytes = encodeUtf8(value);
    ASSERT_EQ(bytes.has_value(), isScalar(value)) << std::hex << static_cast<unsigned>(value);
    if (bytes) {
      ASSERT_TRUE(isUtf8(*bytes)) << std::hex << static_cast<unsigned>(value);
      ASSERT_FALSE(bytes->size() > 1 && isUtf8(bytes->substr(0, bytes->size() - 1)));
    }
  }
  EXPECT_EQ(encodeUtf8(0xFFFFFFFF), std::nullopt);
  EXPECT_EQ(encodeUtf8(U'\u00E9'), "\xC3\xA9");
  EXPECT_EQ(encodeUtf8(U'\u20AC'), "\xE2\x82\xAC");
  EXPECT_EQ(encodeUtf8(U'\U0001F3B9'), "\xF0\x9F\x8E\xB9");
}

// Overlong forms, surrogates and stray bytes would all show as a wrong number.
TEST(Utf8Test, ExactlyTheWellFormedSequencesAreTaken) {
  constexpr unsigned inTwoBytes = 0x800 - 0x80;
  constexpr unsigned inThreeBytes = 0x10000 - 0x800 - 0x800;
  unsigned taken = 0;
  std::string text(3, '\0');
  for (unsigned value = 0x800000; value <= 0xFFFFFF; ++value) {
    text[0] = static_cast<char>(value >> 16);
    text[1] = static_cast<char>(value >> 8);
    text[2] = static_cast<char>(value);
    taken += isUtf8(text) ? 1U : 0U;
  }
  EXPECT_EQ(taken, inThreeBytes + inTwoBytes * 0x80);

  constexpr unsigned inFourBytes = 0x100000;
  taken = 0;
  for (unsigned value = 0xF08080; value <= 0xFFFFFF; ++value) {
    text[0] = static_cast<char>(value >> 16);
    text[1] = static_cast<char>(value >> 8);
    text[2] = static_cast<char>(value);
    taken += isUtf8(text + '\xBF') ? 1U : 0U;
  }
  EXPECT_EQ(taken * 0x40, inFourBytes);
}

TEST(Utf8Test, AFaultAnywhereInATextCounts) {
  EXPECT_TRUE(isUtf8(""));
  EXPECT_TRUE(isUtf8(std::string("a\0b", 3)));
  EXPECT_TRUE(isUtf8("\xC3\xA9t\xC3\xA9"));
  EXPECT_FALSE(isUtf8("\xC3\xA9t\xC3"));
  EXPECT_FALSE(isUtf8("\xA9t\xC3\xA9"));
  EXPECT_FALSE(isUtf8("abc\xFF"));
}

}  // namespace
}  // namespace karvex::foundation

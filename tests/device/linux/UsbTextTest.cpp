#include "device/platform/linux/UsbText.hpp"

#include <gtest/gtest.h>

#include <vector>

namespace karvex::device {
namespace {

std::string repeated(std::string_view text, std::size_t times) {
  std::string result;
  for (std::size_t i = 0; i < times; ++i) {
    result += text;
  }
  return result;
}

TEST(UsbText, CleanTextPassesUnchanged) {
  const std::vector<std::string> clean = {
      "",
      "1234560",
      " !~",                                   // the ends of printable ASCII
      "\u00A0\u07FF\u0800\uD7FF\uE000\uFFFF",  // the ends of the two- and three-byte forms, around the
                                               // surrogates
      "\U00010000\U0010FFFF",
      repeated("a", longestUsbString),
      repeated("\u20AC", longestUsbString),
      repeated("\U0001F3B8", longestUsbString / 2),
  };
  for (const auto& text : clean) {
    EXPECT_EQ(serialNumberFromUsb(text), text);
    EXPECT_EQ(productNameFromUsb(text), text);
  }
}

TEST(UsbText, WhatIsNotCleanIsNoSerialNumberAndIsMarkedInAName) {
  struct Case {
    const char* what;
    std::string raw;
    std::string name;
  };
  const std::vector<Case> cases = {
      {"null byte", std::string("a\0b", 3), "a\uFFFDb"},
      {"escape", "a\x1B[31mb", "a\uFFFD[31mb"},
      {"line end", "a\r\nb", "a\uFFFD\uFFFDb"},
      {"delete", "a\x7F", "a\uFFFD"},
      {"C1 control",
       "a\u009B"
       "b",
       "a\uFFFDb"},
      {"stray continuation",
       "a\x80"
       "b",
       "a\uFFFDb"},
      {"no lead byte", "\xFF\xFE", "\uFFFD\uFFFD"},
      {"cut short at the end", "a\xE2\x82", "a\uFFFD\uFFFD"},
      {"cut short by a lead byte", "a\xC3\xC3\xA9", "a\uFFFDé"},
      {"cut short by ASCII",
       "a\xE2"
       "bc",
       "a\uFFFDbc"},
      {"slash in two bytes", "\xC0\xAF", "\uFFFD\uFFFD"},
      {"slash in three bytes", "\xE0\x80\xAF", "\uFFFD\uFFFD\uFFFD"},
      {"U+FFFF in four bytes", "\xF0\x8F\xBF\xBF", "\uFFFD\uFFFD\uFFFD\uFFFD"},
      {"surrogate", "\xED\xA0\x80", "\uFFFD\uFFFD\uFFFD"},
      {"above U+10FFFF", "\xF4\x90\x80\x80", "\uFFFD\uFFFD\uFFFD\uFFFD"},
  };
  for (const auto& [what, raw, name] : cases) {
    EXPECT_EQ(serialNumberFromUsb(raw), std::nullopt) << what;
    EXPECT_EQ(productNameFromUsb(raw), name) << what;
  }
}

TEST(UsbText, NothingBehindTheTextIsRead) {
  const std::string_view text = std::string_view("\u20AC").substr(0, 2);
  EXPECT_EQ(serialNumberFromUsb(text), std::nullopt);
  EXPECT_EQ(productNameFromUsb(text), "\uFFFD\uFFFD");
}

TEST(UsbText, LongerThanADescriptorHoldsIsNoSerialNumberAndACutName) {
  const std::string guitar = "\U0001F3B8";  // two UTF-16 units
  const std::vector<std::pair<std::string, std::string>> cases = {
      {repeated("a", longestUsbString + 1), repeated("a", longestUsbString)},
      {repeated("\u20AC", 4096), repeated("\u20AC", longestUsbString)},
      {repeated("a", longestUsbString - 1) + guitar, repeated("a", longestUsbString - 1)},
      {repeated("\xFF", 4096), repeated("\uFFFD", longestUsbString)},
  };
  for (const auto& [raw, name] : cases) {
    EXPECT_EQ(serialNumberFromUsb(raw), std::nullopt);
    EXPECT_EQ(productNameFromUsb(raw), name);
  }
}

}  // namespace
}  // namespace karvex::device

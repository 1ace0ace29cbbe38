#include "service/FormText.hpp"

#include <gtest/gtest.h>

namespace karvex::service {
namespace {

TEST(FormTextTest, ItemsKeepTheirOrderAndHaveNoQuestionMark) {
  EXPECT_EQ(formText({}), "");
  EXPECT_EQ(formText({{"DEVICE_SERIAL_NUMBER", "1000010"}, {"A", ""}, {"", "b"}}),
            "DEVICE_SERIAL_NUMBER=1000010&A=&=b");
}

TEST(FormTextTest, WhatAReaderOfFormsWouldTakeForSomethingElseIsEscaped) {
  const std::pair<std::string, std::string> values[] = {
      {"Expression Pedal", "Expression%20Pedal"},
      {"a&b=c", "a%26b%3Dc"},
      {"1.0+beta", "1.0%2Bbeta"},
      {"100%", "100%25"},
      {"%20", "%2520"},
      {"#1 \"x\" <y>", "%231%20%22x%22%20%3Cy%3E"},
      {"Käse \xE2\x82\xAC", "K%C3%A4se%20%E2%82%AC"},
      {"a/b?c:d@e-f_g.h~i", "a/b?c:d@e-f_g.h~i"},
      {std::string("\0\n\x7F", 3), "%00%0A%7F"},
      {"[x]{y}|\\^`", "%5Bx%5D%7By%7D%7C%5C%5E%60"},
  };
  for (const auto& [raw, encoded] : values) {
    EXPECT_EQ(formText({{raw, raw}}), encoded + "=" + encoded);
  }
}

}  // namespace
}  // namespace karvex::service

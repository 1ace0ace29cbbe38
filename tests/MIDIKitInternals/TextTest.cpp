#include "MIDIKitInternals/Text.hpp"

#include <gtest/gtest.h>

#include <cctype>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "foundation/text/Utf8.hpp"

namespace midikit::internals {
namespace {

using namespace std::string_view_literals;

TEST(Text, QuotedStandsBetweenDoubleQuotesAndEscapesNothing) {
  EXPECT_EQ(quoted(""), R"("")");
  EXPECT_EQ(quoted(R"(a "b" \)"), R"("a "b" \")");
}

TEST(Text, OfAsciiLettersAndDigitsAreAlphanumeric) {
  for (int byte = 0; byte < 0x80; ++byte) {
    const std::string text(1, static_cast<char>(byte));
    EXPECT_EQ(onlyAlphanumerics(text) == text, std::isalnum(byte) != 0) << byte;
  }
}

TEST(Text, LettersMarksAndNumbersOfAllScriptsAreAlphanumeric) {
  struct Row {
    const char* what;
    std::string_view text;
    std::string_view kept;
  };
  const Row rows[] = {
      {"Latin letters behind ASCII (Ll)", "M\u00FCller & S\u00F8n", "M\u00FCllerS\u00F8n"},
      {"combining acute accent (Mn)", "e\u0301!", "e\u0301"},
      {"spacing mark (Mc) and enclosing mark (Me)", "\u0903 \u20DD", "\u0903\u20DD"},
      {"modifier letter (Lm), title case (Lt)", "\u02B0\u01C5", "\u02B0\u01C5"},
      {"Greek, Cyrillic, Hebrew, Kana, Han", "\u03A9-\u0416-\u05D0-\u30A2-\u97F3",
       "\u03A9\u0416\u05D0\u30A2\u97F3"},
      {"Arabic digit (Nd), Roman numeral (Nl), fraction (No)", "\u0663 \u2167 \u00BD", "\u0663\u2167\u00BD"},
      {"beyond the basic plane: Gothic, Han extension B", "\U00010330 \U00020000", "\U00010330\U00020000"},
      {"last and first of neighbouring runs of the table", "\u037A\u037D\u037E\u037F\u0380",
       "\u037A\u037D\u037F"},
      {"last run of the table: variation selectors", "\U000E00FF\U000E0100\U000E01EF\U000E01F0",
       "\U000E0100\U000E01EF"},
      {"symbols, punctuation, separators", "\u00A0\u00D7\u20AC\u2014\u3000\u266A", ""},
      {"pictograph, replacement character, private use, unassigned", "\U0001F3B9\uFFFD\uE000\u0378", ""},
      {"NUL and controls", "a\0b\x7F\u0085"sv, "ab"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(onlyAlphanumerics(row.text), row.kept) << row.what;
  }
}

TEST(Text, MalformedBytesGoAndTheirNeighboursStay) {
  for (const auto broken : {"\x80"sv, "\xC3"sv, "\xC1\x81"sv, "\xE2\x82"sv, "\xED\xA0\x80"sv,
                            "\xF0\x9F\x8E"sv, "\xF4\x90\x80\x80"sv, "\xFF"sv}) {
    EXPECT_EQ(onlyAlphanumerics(std::string(broken) + "x" + std::string(broken)), "x");
    EXPECT_EQ(onlyAlphanumerics(std::string(broken) + "\u00FC"), "\u00FC");
  }
}

TEST(Text, EachCharacterOfUnicodeStaysWholeOrGoes) {
  std::size_t kept = 0;
  for (char32_t scalar = 0; scalar <= 0x10FFFF; ++scalar) {
    const auto character = karvex::foundation::encodeUtf8(scalar);
    if (!character) {
      continue;
    }
    const auto result = onlyAlphanumerics(*character);
    ASSERT_TRUE(result.empty() || result == *character) << static_cast<std::uint32_t>(scalar);
    kept += result.empty() ? 0U : 1U;
  }
  // Version 14.0 of Unicode counts 131756 letters, 2408 marks and 1791 numbers.
  EXPECT_EQ(kept, 131756U + 2408U + 1791U);
}

}  // namespace
}  // namespace midikit::internals

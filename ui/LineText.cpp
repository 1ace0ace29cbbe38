#include "ui/LineText.hpp"

#include <algorithm>
#include <array>
#include <cstddef>

#include "foundation/text/Utf8.hpp"

namespace karvex::ui {
namespace {

constexpr std::string_view replacement = "\xEF\xBF\xBD";  // U+FFFD

struct Range {
  char32_t first;
  char32_t last;
};

/// U+200C and U+200D, the joiners, are left out of the ranges around them.
constexpr std::array unsafe{
    Range{0x00, 0x1F},       Range{0x7F, 0x9F},      // controls (ECMA-48: C0, DEL, C1)
    Range{0xAD, 0xAD},                               // soft hyphen
    Range{0x61C, 0x61C},                             // directions (UAX #9), here and below
    Range{0x180E, 0x180E},   Range{0x200B, 0x200B},  // without a width
    Range{0x200E, 0x200F},   Range{0x2028, 0x202E},  // directions; ends of lines and paragraphs
    Range{0x2060, 0x206F},                           // without a width, directions, obsolete formatting
    Range{0xFEFF, 0xFEFF},   Range{0xFFF9, 0xFFFB},  // byte order mark, annotations
    Range{0xE0000, 0xE007F},                         // tags
};

/// The length in bytes that a character with this first byte has.
std::size_t lengthBehind(unsigned char first) {
  if (first < 0x80) {
    return 1;
  }
  return first < 0xE0 ? 2 : (first < 0xF0 ? 3 : 4);
}

}  // namespace

bool isUnsafeInLine(char32_t character) {
  return std::ranges::any_of(
      unsafe, [character](Range range) { return character >= range.first && character <= range.last; });
}

std::string_view firstCharacter(std::string_view text) {
  return text.substr(0, lengthBehind(static_cast<unsigned char>(text.front())));
}

char32_t characterIn(std::string_view bytes) {
  constexpr std::array<unsigned, 5> bitsOfFirst{0, 0x7F, 0x1F, 0x0F, 0x07};
  char32_t character = static_cast<unsigned char>(bytes.front()) & bitsOfFirst.at(bytes.size());
  for (const char byte : bytes.substr(1)) {
    character = character << 6U | (static_cast<unsigned char>(byte) & 0x3FU);
  }
  return character;
}

std::string lineOf(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const auto bytes = firstCharacter(text);
    if (!foundation::isUtf8(bytes)) {
      result += replacement;
      text.remove_prefix(1);
      continue;
    }
    result += isUnsafeInLine(characterIn(bytes)) ? replacement : bytes;
    text.remove_prefix(bytes.size());
  }
  return result;
}

}  // namespace karvex::ui

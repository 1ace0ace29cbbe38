#include "ui/LineText.hpp"

#include <algorithm>
#include <array>

#include "foundation/text/Utf8.hpp"

namespace karvex::ui {
namespace {

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

}  // namespace

bool isUnsafeInLine(char32_t character) {
  return std::ranges::any_of(
      unsafe, [character](Range range) { return character >= range.first && character <= range.last; });
}

std::string lineOf(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const auto character = foundation::firstCharacter(text);
    result +=
        character && !isUnsafeInLine(character->scalar) ? character->bytes : foundation::replacementCharacter;
    text.remove_prefix(character ? character->bytes.size() : 1);
  }
  return result;
}

}  // namespace karvex::ui

#include "ui/console/StyledText.hpp"

#include "foundation/Utf8.hpp"

namespace karvex::ui::console {
namespace {

constexpr std::string_view replacement = "\xEF\xBF\xBD";  // U+FFFD

bool isContinuation(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

/// The length in bytes that a character with this first byte has.
std::size_t lengthBehind(unsigned char first) {
  if (first < 0x80) {
    return 1;
  }
  return first < 0xE0 ? 2 : (first < 0xF0 ? 3 : 4);
}

/// The control characters C0, DEL and C1 (ECMA-48, 8.1), the last in their two-byte form.
bool isControl(std::string_view character) {
  const auto first = static_cast<unsigned char>(character.front());
  return first < 0x20 || first == 0x7F ||
         (first == 0xC2 && character.size() > 1 && static_cast<unsigned char>(character[1]) < 0xA0);
}

/// SGR numbers of the colours; those of the terminal's own palette suit its ground.
std::string_view colourOf(Tone tone) {
  switch (tone) {
    case Tone::gray:
      return "90";
    case Tone::orange:
      return "33";
    case Tone::white:
      return "97";
    case Tone::green:
      return "32";
    case Tone::red:
      return "31";
  }
  return "39";
}

}  // namespace

std::string StyledLine::plainText() const {
  std::string text;
  for (const auto& span : spans) {
    text += span.text;
  }
  return text;
}

std::string printable(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const auto length = std::min(lengthBehind(static_cast<unsigned char>(text.front())), text.size());
    const auto character = text.substr(0, length);
    if (!foundation::isUtf8(character)) {
      result += replacement;
      text.remove_prefix(1);
      continue;
    }
    result += isControl(character) ? replacement : character;
    text.remove_prefix(length);
  }
  return result;
}

std::size_t columnsOf(std::string_view utf8) {
  std::size_t columns = 0;
  for (const char byte : utf8) {
    columns += isContinuation(byte) ? 0U : 1U;
  }
  return columns;
}

std::string fitted(std::string_view utf8, std::size_t columns) {
  const auto width = columnsOf(utf8);
  if (width <= columns) {
    return std::string(utf8) + std::string(columns - width, ' ');
  }
  if (columns == 0) {
    return {};
  }
  std::size_t end = 0;
  for (std::size_t kept = 0; kept + 1 < columns; ++kept) {
    end += lengthBehind(static_cast<unsigned char>(utf8[end]));
  }
  return std::string(utf8.substr(0, end)) + "…";
}

std::string withSequences(const StyledLine& line) {
  std::string text;
  for (const auto& span : line.spans) {
    std::string style;
    style += line.isReversed ? ";7" : "";
    style += span.isBold ? ";1" : "";
    if (span.tone) {
      style.append(";").append(colourOf(*span.tone));
    }
    if (style.empty()) {
      text += span.text;
    } else {
      text.append("\x1b[0").append(style).append("m").append(span.text).append("\x1b[0m");
    }
  }
  return text;
}

}  // namespace karvex::ui::console

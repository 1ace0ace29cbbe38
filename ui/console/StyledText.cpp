#include "ui/console/StyledText.hpp"

#include <algorithm>
#include <array>

#include "foundation/text/Utf8.hpp"
#include "ui/console/CharacterWidth.hpp"

namespace karvex::ui::console {
namespace {

/// The first character of a text that isn't empty; a malformed byte counts as one.
foundation::Utf8Character firstOf(std::string_view utf8) {
  return foundation::firstCharacter(utf8).value_or(
      foundation::Utf8Character{.bytes = utf8.substr(0, 1), .scalar = U'\uFFFD'});
}

/// The longest beginning that takes no more columns; half a wide character doesn't fit.
std::string_view beginningOf(std::string_view utf8, std::size_t columns) {
  std::size_t end = 0;
  std::size_t taken = 0;
  while (end < utf8.size()) {
    const auto character = firstOf(utf8.substr(end));
    taken += widthOf(character.scalar);
    if (taken > columns) {
      break;
    }
    end += character.bytes.size();
  }
  return utf8.substr(0, end);
}

/// SGR numbers of the colours, each with its lead; empty where the text keeps the terminal's own colour. Of
/// the 256 colours, those that have a contrast of 3.5 and more on black and on white. White stands for what
/// needs no colour: it would be gone on a light ground.
std::string_view colourOf(Tone tone, Colours colours) {
  const bool hasMany = colours == Colours::many;
  switch (tone) {
    case Tone::gray:
      return hasMany ? ";38;5;243" : "";
    case Tone::orange:
      return hasMany ? ";38;5;166" : ";33";
    case Tone::white:
      return "";
    case Tone::green:
      return hasMany ? ";38;5;28" : ";32";
    case Tone::red:
      return hasMany ? ";38;5;160" : ";31";
  }
  return "";
}

}  // namespace

std::string StyledLine::plainText() const {
  std::string text;
  for (const auto& span : spans) {
    text += span.text;
  }
  return text;
}

std::size_t columnsOf(std::string_view utf8) {
  std::size_t columns = 0;
  while (!utf8.empty()) {
    const auto character = firstOf(utf8);
    columns += widthOf(character.scalar);
    utf8.remove_prefix(character.bytes.size());
  }
  return columns;
}

std::string fitted(std::string_view utf8, std::size_t columns) {
  auto width = columnsOf(utf8);
  while (width > columns && utf8.ends_with(' ')) {
    utf8.remove_suffix(1);
    --width;
  }
  if (width <= columns) {
    return std::string(utf8) + std::string(columns - width, ' ');
  }
  if (columns == 0) {
    return {};
  }
  const auto kept = beginningOf(utf8, columns - 1);
  return std::string(kept) + "…" + std::string(columns - 1 - columnsOf(kept), ' ');
}

std::vector<std::string> wrapped(std::string_view utf8, std::size_t columns) {
  std::vector<std::string> lines;
  while (columnsOf(utf8) > columns) {
    auto line = beginningOf(utf8, columns);
    if (line.empty()) {
      line = firstOf(utf8).bytes;  // Wider than a line.
    }
    const auto blank = utf8.substr(0, line.size() + 1).rfind(' ');
    if (blank != std::string_view::npos && line.find_first_not_of(' ') < blank) {
      line = line.substr(0, blank);
    }
    lines.emplace_back(line);
    utf8.remove_prefix(line.size());
    utf8.remove_prefix(std::min(utf8.find_first_not_of(' '), utf8.size()));
  }
  if (!utf8.empty() || lines.empty()) {
    lines.emplace_back(utf8);
  }
  return lines;
}

Colours coloursOf(const char* noColor, const char* terminal) {
  if (noColor != nullptr && *noColor != '\0') {
    return Colours::none;
  }
  const std::string_view kind = terminal != nullptr ? terminal : "";
  return kind.find("256color") != std::string_view::npos ? Colours::many : Colours::few;
}

std::string withSequences(const StyledLine& line, Colours colours) {
  std::string text;
  for (const auto& span : line.spans) {
    std::string style;
    style += line.isReversed ? ";7" : "";
    style += span.isBold ? ";1" : "";
    if (span.tone && colours != Colours::none) {
      style += colourOf(*span.tone, colours);
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

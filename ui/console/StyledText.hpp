#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ui/Snapshot.hpp"

/// Text for a terminal, still without its control sequences. Pure functions.
namespace karvex::ui::console {

/// A piece of text in one style.
struct Span {
  std::string text;
  std::optional<Tone> tone;
  bool isBold = false;
};

struct StyledLine {
  std::vector<Span> spans;
  bool isReversed = false;  ///< the whole line stands out, as a selected row

  /// The text without its styles.
  std::string plainText() const;
};

/// How many columns the text takes.
std::size_t columnsOf(std::string_view utf8);

/// The text cut or filled with blanks to that many columns; a cut text ends in "…", and in a blank after it
/// where a wide character would have taken both. Cutting blanks alone leaves no "…".
std::string fitted(std::string_view utf8, std::size_t columns);

/// The text in lines of no more than that many columns, at least 1, broken at blanks where there are any.
/// Only a character that is wider by itself gets a wider line.
std::vector<std::string> wrapped(std::string_view utf8, std::size_t columns);

/// How many colours a terminal has, of those that this program uses.
enum class Colours { none, few, many };

/// The colours to use, from the values of NO_COLOR, which takes them all away unless it is empty, and of
/// TERM. Either may be null. Thread-safe: yes. Realtime-safe: yes.
Colours coloursOf(const char* noColor, const char* terminal);

/// The line with the terminal's control sequences (ECMA-48, SGR) for its styles.
/// Thread-safe: yes.
/// Realtime-safe: no, it allocates.
std::string withSequences(const StyledLine& line, Colours colours);

}  // namespace karvex::ui::console

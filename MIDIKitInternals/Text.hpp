#pragma once

#include <string>
#include <string_view>

/// Helpers for text in UTF-8. Pure functions.
namespace midikit::internals {

/// The text between two double-quote characters. Nothing in it is escaped.
std::string quoted(std::string_view text);

/// The text without the characters that are neither letters, marks nor numbers: what stays is of one of
/// Unicode's general categories L*, M* and N*, whatever the locale. Bytes that aren't well-formed UTF-8 go
/// too, one by one, so that a broken character takes no good one with it.
std::string onlyAlphanumerics(std::string_view text);

/// "[a, b]": the text that `textOf` returns for each element, in their order.
template <class List, class TextOf>
std::string listText(const List& list, const TextOf& textOf) {
  std::string text("[");
  std::string_view between;
  for (const auto& element : list) {
    text.append(between).append(textOf(element));
    between = ", ";
  }
  return text.append("]");
}

}  // namespace midikit::internals

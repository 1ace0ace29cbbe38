#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// The encoding form UTF-8 (RFC 3629). Pure functions, thread-safe; those that return a string allocate.
namespace karvex::foundation {

/// U+FFFD, which stands for what can't be shown.
inline constexpr std::string_view replacementCharacter = "\xEF\xBF\xBD";

/// The first character of a text.
struct Utf8Character {
  std::string_view bytes;  ///< 1 to 4 of them, in the text
  char32_t scalar = 0;     ///< U+0000 to U+10FFFF without surrogates

  /// C0, DEL or C1 (ECMA-48).
  bool isControl() const { return scalar < 0x20 || (scalar >= 0x7F && scalar <= 0x9F); }
  /// How many code units it takes in UTF-16: 1 or 2.
  std::size_t utf16Units() const { return bytes.size() == 4 ? 2 : 1; }
};

/// Nothing if the text is empty or its first bytes are malformed; then the first one is an error by itself.
std::optional<Utf8Character> firstCharacter(std::string_view text);

/// True if the text is well-formed: no stray or missing bytes, no surrogates, nothing in a longer form than
/// needed, nothing above U+10FFFF. Control characters and NUL are characters like any other.
bool isUtf8(std::string_view text);

/// The beginning of a well-formed text, at most `bytes` long and without a character cut in two.
std::string_view beginningOf(std::string_view text, std::size_t bytes);

/// The bytes of one character; nothing for a surrogate or a value above U+10FFFF.
std::optional<std::string> encodeUtf8(char32_t character);

}  // namespace karvex::foundation

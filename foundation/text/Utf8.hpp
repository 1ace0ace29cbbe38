#pragma once

#include <optional>
#include <string>
#include <string_view>

/// The encoding form UTF-8 (RFC 3629). Pure functions.
namespace karvex::foundation {

/// True if the text is well-formed: no stray or missing bytes, no surrogates, nothing in a longer form than
/// needed, nothing above U+10FFFF. Control characters and NUL are characters like any other.
bool isUtf8(std::string_view text);

/// The bytes of one character; nothing for a surrogate or a value above U+10FFFF.
std::optional<std::string> encodeUtf8(char32_t character);

}  // namespace karvex::foundation

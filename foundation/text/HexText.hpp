#pragma once

#include <string>
#include <string_view>

/// Bytes as hexadecimal digits. Pure functions, thread-safe; they allocate.
namespace karvex::foundation {

inline constexpr std::string_view lowerCaseDigits = "0123456789abcdef";
inline constexpr std::string_view upperCaseDigits = "0123456789ABCDEF";

/// Two digits for each byte, without anything between them.
std::string hexText(std::string_view bytes, std::string_view digits = lowerCaseDigits);

/// The text with "%" and two upper-case digits (RFC 3986, section 2.1) for each byte that isn't kept.
std::string percentEncoded(std::string_view text, bool (*isKept)(char byte));

}  // namespace karvex::foundation

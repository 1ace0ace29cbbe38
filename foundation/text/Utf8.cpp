#include "foundation/text/Utf8.hpp"

#include <algorithm>
#include <cstddef>

namespace karvex::foundation {
namespace {

bool isBetween(char byte, unsigned char low, unsigned char high) {
  const auto value = static_cast<unsigned char>(byte);
  return value >= low && value <= high;
}

/// How many bytes the character at the front of a text that isn't empty has; 0 if they are malformed. The
/// ranges are those of RFC 3629, section 4: the second byte alone tells overlong forms, surrogates and what
/// is above U+10FFFF.
std::size_t bytesOfFirst(std::string_view text) {
  const auto lead = static_cast<unsigned char>(text.front());
  if (lead < 0x80) {
    return 1;
  }
  const std::size_t bytes = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  if (lead < 0xC2 || lead > 0xF4 || text.size() < bytes) {
    return 0;
  }
  const unsigned char low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
  const unsigned char high = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
  const auto rest = text.substr(2, bytes - 2);
  const bool isWellFormed =
      isBetween(text[1], low, high) &&
      std::all_of(rest.begin(), rest.end(), [](char byte) { return isBetween(byte, 0x80, 0xBF); });
  return isWellFormed ? bytes : 0;
}

}  // namespace

std::optional<Utf8Character> firstCharacter(std::string_view text) {
  const auto length = text.empty() ? 0 : bytesOfFirst(text);
  if (length == 0) {
    return std::nullopt;
  }
  const auto bytes = text.substr(0, length);
  const auto leadBits = length == 1 ? 7 : 7 - length;
  auto scalar = static_cast<char32_t>(static_cast<unsigned char>(bytes.front()) & ((1U << leadBits) - 1));
  for (const char byte : bytes.substr(1)) {
    scalar = (scalar << 6U) | (static_cast<unsigned char>(byte) & 0x3FU);
  }
  return Utf8Character{.bytes = bytes, .scalar = scalar};
}

bool isUtf8(std::string_view text) {
  while (!text.empty()) {
    const auto bytes = bytesOfFirst(text);
    if (bytes == 0) {
      return false;
    }
    text.remove_prefix(bytes);
  }
  return true;
}

std::string_view beginningOf(std::string_view text, std::size_t bytes) {
  if (text.size() <= bytes) {
    return text;
  }
  while (bytes > 0 && isBetween(text[bytes], 0x80, 0xBF)) {
    --bytes;
  }
  return text.substr(0, bytes);
}

std::optional<std::string> encodeUtf8(char32_t character) {
  const auto byte = [](char32_t value) { return static_cast<char>(value); };
  const auto following = [character, byte](unsigned shift) {
    return byte(0x80 | ((character >> shift) & 0x3F));
  };
  if (character > 0x10FFFF || (character >= 0xD800 && character <= 0xDFFF)) {
    return std::nullopt;
  }
  if (character < 0x80) {
    return std::string{byte(character)};
  }
  if (character < 0x800) {
    return std::string{byte(0xC0 | (character >> 6)), following(0)};
  }
  if (character < 0x10000) {
    return std::string{byte(0xE0 | (character >> 12)), following(6), following(0)};
  }
  return std::string{byte(0xF0 | (character >> 18)), following(12), following(6), following(0)};
}

}  // namespace karvex::foundation

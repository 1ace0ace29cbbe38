#include "foundation/text/HexText.hpp"

namespace karvex::foundation {

std::string hexText(std::string_view bytes, std::string_view digits) {
  std::string text;
  text.reserve(2 * bytes.size());
  for (const char character : bytes) {
    const auto byte = static_cast<unsigned char>(character);
    text += digits[byte >> 4U];
    text += digits[byte & 0xFU];
  }
  return text;
}

std::string percentEncoded(std::string_view text, bool (*isKept)(char byte)) {
  std::string encoded;
  for (const char character : text) {
    if (isKept(character)) {
      encoded += character;
    } else {
      encoded += '%' + hexText({&character, 1}, upperCaseDigits);
    }
  }
  return encoded;
}

}  // namespace karvex::foundation

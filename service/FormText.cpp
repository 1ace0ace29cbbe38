#include "service/FormText.hpp"

namespace karvex::service {
namespace {

/// ASCII letters and digits, whatever the locale, and the marks that mean nothing in a form.
bool standsAsItIs(char character) {
  constexpr std::string_view marks = "-._~!$'()*,;:@/?";
  return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
         (character >= '0' && character <= '9') || marks.find(character) != std::string_view::npos;
}

void appendEncoded(std::string& text, std::string_view raw) {
  constexpr std::string_view digits = "0123456789ABCDEF";
  for (const char character : raw) {
    if (standsAsItIs(character)) {
      text += character;
    } else {
      const auto byte = static_cast<unsigned char>(character);
      text += '%';
      text += digits[byte >> 4U];
      text += digits[byte & 0xFU];
    }
  }
}

}  // namespace

std::string formText(const std::vector<FormItem>& items) {
  std::string text;
  for (const auto& [name, value] : items) {
    if (!text.empty()) {
      text += '&';
    }
    appendEncoded(text, name);
    text += '=';
    appendEncoded(text, value);
  }
  return text;
}

}  // namespace karvex::service

#include "service/FormText.hpp"

#include "foundation/text/HexText.hpp"

namespace karvex::service {
namespace {

/// ASCII letters and digits, whatever the locale, and the marks that mean nothing in a form.
bool standsAsItIs(char character) {
  constexpr std::string_view marks = "-._~!$'()*,;:@/?";
  return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
         (character >= '0' && character <= '9') || marks.find(character) != std::string_view::npos;
}

}  // namespace

std::string formText(const std::vector<FormItem>& items) {
  std::string text;
  for (const auto& [name, value] : items) {
    if (!text.empty()) {
      text += '&';
    }
    text += foundation::percentEncoded(name, standsAsItIs) + '=' +
            foundation::percentEncoded(value, standsAsItIs);
  }
  return text;
}

}  // namespace karvex::service

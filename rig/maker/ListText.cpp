#include "rig/maker/ListText.hpp"

#include <nlohmann/json.hpp>

namespace karvex::rig {

std::string inQuotes(std::string_view text) {
  constexpr std::size_t enough = 80;  // bytes
  const bool isCut = text.size() > enough;
  const nlohmann::json json = isCut ? std::string(text.substr(0, enough)) + "..." : std::string(text);
  constexpr bool ensuresAscii = true;
  auto escaped = json.dump(-1, ' ', ensuresAscii, nlohmann::json::error_handler_t::replace);
  return escaped;
}

bool hasControlCharacter(std::string_view text) {
  for (std::size_t at = 0; at < text.size(); ++at) {
    const auto byte = static_cast<unsigned char>(text[at]);
    const bool isC0 = byte < 0x20 || byte == 0x7F;
    const bool isC1 = byte == 0xC2 && at + 1 < text.size() && static_cast<unsigned char>(text[at + 1]) < 0xA0;
    if (isC0 || isC1) {
      return true;
    }
  }
  return false;
}

}  // namespace karvex::rig

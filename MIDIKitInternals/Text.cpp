#include "MIDIKitInternals/Text.hpp"

#include <algorithm>
#include <cstddef>

#include "MIDIKitInternals/AlphanumericRanges.hpp"
#include "foundation/text/Utf8.hpp"

namespace midikit::internals {
namespace {

/// The bytes of the character at the front of a text that isn't empty; nothing if they aren't well-formed.
std::string_view firstCharacter(std::string_view text) {
  const auto lead = static_cast<unsigned char>(text.front());
  const std::size_t bytes = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  const auto character = text.substr(0, bytes);
  return character.size() == bytes && karvex::foundation::isUtf8(character) ? character : std::string_view{};
}

/// The Unicode scalar that one well-formed character stands for.
char32_t scalarOf(std::string_view character) {
  const auto leadBits = character.size() == 1 ? 7 : 7 - character.size();
  auto scalar = static_cast<char32_t>(static_cast<unsigned char>(character.front()) & ((1U << leadBits) - 1));
  for (const char byte : character.substr(1)) {
    scalar = (scalar << 6) | (static_cast<unsigned char>(byte) & 0x3FU);
  }
  return scalar;
}

bool isAlphanumeric(char32_t scalar) {
  const auto range = std::ranges::lower_bound(alphanumericRanges, scalar, {}, &AlphanumericRange::last);
  return range != alphanumericRanges.end() && range->first <= scalar;
}

}  // namespace

std::string quoted(std::string_view text) {
  std::string result;
  result.reserve(text.size() + 2);
  return result.append(1, '"').append(text).append(1, '"');
}

std::string onlyAlphanumerics(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const auto character = firstCharacter(text);
    if (!character.empty() && isAlphanumeric(scalarOf(character))) {
      result += character;
    }
    text.remove_prefix(std::max<std::size_t>(character.size(), 1));
  }
  return result;
}

}  // namespace midikit::internals

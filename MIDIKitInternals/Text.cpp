#include "MIDIKitInternals/Text.hpp"

#include <algorithm>
#include <cstddef>

#include "MIDIKitInternals/AlphanumericRanges.hpp"
#include "foundation/text/Utf8.hpp"

namespace midikit::internals {
namespace {

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
    const auto character = karvex::foundation::firstCharacter(text);
    if (character && isAlphanumeric(character->scalar)) {
      result += character->bytes;
    }
    text.remove_prefix(character ? character->bytes.size() : 1);
  }
  return result;
}

}  // namespace midikit::internals

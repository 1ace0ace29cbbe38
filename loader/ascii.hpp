#pragma once

#include <algorithm>
#include <string_view>

namespace karvex::loader {

/// True if the texts differ at most in the case of ASCII letters. The user's language plays no part, which
/// the C library's comparisons follow: in Turkish, "I" is not the capital letter of "i".
///
/// Thread-safe: yes.
/// Realtime-safe: yes.
constexpr bool is_same_ascii(std::string_view one, std::string_view other) {
  constexpr auto lower = [](char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
  };
  return std::ranges::equal(one, other, {}, lower, lower);
}

}  // namespace karvex::loader

#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <ranges>
#include <string>
#include <string_view>
#include <utility>

/// Integers as hexadecimal and binary text.
namespace midikit::internals {

/// How a number is written.
struct RadixStyle {
  /// The least count of digits; "0" fills up in front. Neither sign nor prefix counts.
  std::size_t width = 0;
  /// "0x" or "0b" in front of the digits.
  bool prefix = false;
};

/// `magnitude` in radix 16 or 2; the sign stands in front of the prefix. What the functions below are made
/// of.
std::string radixText(std::uint64_t magnitude, bool isNegative, unsigned radix, RadixStyle style);

template <std::integral Integer>
std::string radixText(Integer number, unsigned radix, RadixStyle style) {
  const auto bits = static_cast<std::uint64_t>(number);
  const bool isNegative = std::cmp_less(number, 0);
  return radixText(isNegative ? 0 - bits : bits, isNegative, radix, style);
}

/// "7F", "0x07": upper-case digits. A negative number is its magnitude behind a "-".
template <std::integral Integer>
std::string hexText(Integer number, RadixStyle style = {}) {
  return radixText(number, 16, style);
}

/// "101", "0b0101".
template <std::integral Integer>
std::string binaryText(Integer number, RadixStyle style = {}) {
  return radixText(number, 2, style);
}

/// Each number as above, with `separator` between them.
template <std::ranges::input_range Numbers>
  requires std::integral<std::ranges::range_value_t<Numbers>>
std::string hexText(Numbers&& numbers, RadixStyle style = {}, std::string_view separator = " ") {
  std::string text;
  std::string_view between;
  for (const auto number : numbers) {
    text.append(between).append(hexText(number, style));
    between = separator;
  }
  return text;
}

/// "[0xF0, 0x7E]": the list between brackets, each number with its prefix and at least `width` digits.
template <std::ranges::input_range Numbers>
  requires std::integral<std::ranges::range_value_t<Numbers>>
std::string bracketedHexText(Numbers&& numbers, std::size_t width = 0) {
  std::string text("[");
  text.append(hexText(numbers, {.width = width, .prefix = true}, ", ")).append("]");
  return text;
}

}  // namespace midikit::internals

#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

#include "MIDIKitCore/DecodingError.hpp"
#include "MIDIKitCore/numbers/BoundedInteger.hpp"
#include "MIDIKitCore/numbers/UInt.hpp"
#include "MIDIKitInternals/Result.hpp"

namespace midikit::core {

/// -64 to 63: a signed integer of seven bits in two's complement. A plain value of one byte that sorts,
/// compares and hashes by the signed value. Checked forms state a contract of the caller, as those of
/// `BoundedInteger` do. Any thread.
class Int7 {
 private:
  template <PlainInteger T>
  static constexpr bool isBelow(T source) {
    if constexpr (std::is_signed_v<T>) {
      return source < -64;
    } else {
      return false;
    }
  }

  template <PlainInteger T>
  static constexpr bool isAbove(T source) {
    return source > T{63};
  }

 public:
  using storage_type = std::int8_t;

  static constexpr int bitWidth = 7;
  static constexpr std::string_view typeName = "Int7";

  /// 0.
  constexpr Int7() = default;

  /// Checked: raises `underflow` below -64, `overflow` above 63.
  constexpr explicit Int7(PlainInteger auto source) : value_(static_cast<std::int8_t>(source)) {
    if (isBelow(source)) {
      detail::raiseUnderflow(typeName);
    }
    if (isAbove(source)) {
      detail::raiseOverflow(typeName);
    }
  }

  /// `source` if it is in range, else nothing.
  static constexpr std::optional<Int7> exactly(PlainInteger auto source) {
    return isBelow(source) || isAbove(source) ? std::nullopt : std::optional(Int7(source));
  }

  /// -64 below -64, 63 above 63, else `source`.
  static constexpr Int7 clamping(PlainInteger auto source) {
    if (isBelow(source)) {
      return minimum();
    }
    return isAbove(source) ? maximum() : Int7(source);
  }

  /// The value of a two's-complement pattern; its bit 7 is ignored.
  static constexpr Int7 fromBitPattern(std::uint8_t pattern) {
    const int low = pattern & 0x3F;
    return Int7((pattern & 0x40U) != 0 ? low - 64 : low);
  }
  static constexpr Int7 fromBitPattern(UInt7 pattern) { return fromBitPattern(pattern.value()); }

  static constexpr Int7 minimum() { return Int7(-64); }
  static constexpr Int7 maximum() { return Int7(63); }

  constexpr std::int8_t value() const noexcept { return value_; }

  template <class T>
    requires(PlainInteger<T> && std::is_signed_v<T>)
  constexpr explicit operator T() const noexcept {
    return value_;
  }

  /// Low six bits of the pattern: the value, or the value plus 64 where that is negative.
  constexpr std::uint8_t sixBitStorage() const { return bitPattern() & 0x3FU; }

  /// Bit 6 of the pattern.
  constexpr bool isNegative() const { return value_ < 0; }

  /// The two's-complement pattern, 0 to 127.
  constexpr std::uint8_t bitPattern() const { return static_cast<std::uint8_t>(value_) & 0x7FU; }
  constexpr UInt7 uint7BitPattern() const { return UInt7::unchecked(bitPattern()); }

  /// "0b" and seven binary digits of the pattern.
  std::string binaryDescription() const;

  /// Signed decimal: "-64".
  std::string description() const { return std::to_string(value_); }

  /// Name and value: "Int7(-64)".
  std::string debugDescription() const { return detail::debugText(typeName, description()); }

  /// A serialised value is one signed byte.
  constexpr std::int8_t encoded() const noexcept { return value_; }

  /// Reads a serialised value back through `exactly`; out of range it fails, without a raise.
  static constexpr internals::Result<Int7, DecodingError> decoded(std::int8_t encoded) {
    if (const auto value = exactly(encoded)) {
      return *value;
    }
    return DecodingError{typeName};
  }

  constexpr bool operator==(const Int7&) const = default;
  constexpr std::strong_ordering operator<=>(const Int7&) const = default;

 private:
  std::int8_t value_ = 0;
};

}  // namespace midikit::core

/// Hashes the signed value.
template <>
struct std::hash<midikit::core::Int7> {
  std::size_t operator()(midikit::core::Int7 integer) const noexcept {
    return std::hash<std::int8_t>{}(integer.value());
  }
};

#pragma once

#include <compare>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "MIDIKitCore/DecodingError.hpp"
#include "MIDIKitInternals/Result.hpp"

namespace midikit::core {

/// Any integer of the language, but not `bool`.
template <class T>
concept PlainInteger = std::integral<T> && !std::same_as<std::remove_cv_t<T>, bool>;

/// A type of the unsigned family: `UInt4`, `UInt7`, `UInt9`, `UInt14`, `UInt25`.
template <class T>
concept MIDIUnsignedInteger = requires(const T& integer) {
  typename T::storage_type;
  requires std::unsigned_integral<typename T::storage_type>;
  { T::bitWidth } -> std::convertible_to<int>;
  { T::typeName } -> std::convertible_to<std::string_view>;
  { integer.value() } -> std::same_as<typename T::storage_type>;
};

namespace detail {

/// Raise with "<typeName> integer overflowed", "... underflowed" and "... divided by zero".
[[noreturn, gnu::cold]] void raiseOverflow(std::string_view typeName) noexcept;
[[noreturn, gnu::cold]] void raiseUnderflow(std::string_view typeName) noexcept;
[[noreturn, gnu::cold]] void raiseDivisionByZero(std::string_view typeName) noexcept;

/// "<typeName>(<digits>)"
std::string debugText(std::string_view typeName, std::string_view digits);

}  // namespace detail

/// What the unsigned integers of a MIDI field's width share: a value from 0 to 2^Bits - 1 in the smallest
/// standard integer that holds it. `Self` is the concrete type and gives `typeName`.
///
/// A plain value, 0 by default: as large and as cheap to copy as its storage, and `value()` is a load. The
/// invariant `value() <= maximum()` is kept by every operation; one that can't keep it raises (see
/// `internals::raise`), which ends the program. So the checked forms state a contract of the caller and never
/// validate input: what comes from outside the process goes through a mask or through `exactly` first. Any
/// thread.
template <class Self, int Bits, std::unsigned_integral Storage>
class BoundedInteger {
  static_assert(Bits > 0 && Bits < std::numeric_limits<Storage>::digits);

 public:
  using storage_type = Storage;
  /// Of `std::views::iota`.
  using difference_type = std::int32_t;

  /// Width of the field on the wire, in bits.
  static constexpr int bitWidth = Bits;

  /// Checked: `source`, which the caller keeps in range. Raises `underflow` below 0, `overflow` above the
  /// maximum.
  constexpr explicit BoundedInteger(PlainInteger auto source) : storage_(checked(source)) {}

  /// Checked likewise, then truncated toward zero. Not-a-number raises `overflow`.
  constexpr explicit BoundedInteger(std::floating_point auto source) : storage_(checked(source)) {}

  /// Checked: the value of an integer of another width.
  template <MIDIUnsignedInteger Other>
    requires(!std::same_as<Other, Self>)
  constexpr explicit BoundedInteger(Other source) : storage_(checked(source.value())) {}

  /// `source` if it is in range, else nothing.
  static constexpr std::optional<Self> exactly(PlainInteger auto source) {
    return isBelow(source) || isAbove(source) ? std::nullopt
                                              : std::optional(unchecked(static_cast<Storage>(source)));
  }

  /// `source` truncated toward zero if it is in range, else nothing. Not-a-number is nothing.
  static constexpr std::optional<Self> exactly(std::floating_point auto source) {
    return source >= 0 && !isAbove(source) ? std::optional(unchecked(static_cast<Storage>(source)))
                                           : std::nullopt;
  }

  static constexpr std::optional<Self> exactly(MIDIUnsignedInteger auto source) {
    return exactly(source.value());
  }

  /// 0 below 0, the maximum above it, else `source`.
  static constexpr Self clamping(PlainInteger auto source) {
    if (isBelow(source)) {
      return minimum();
    }
    return isAbove(source) ? maximum() : unchecked(static_cast<Storage>(source));
  }

  static constexpr Self clamping(MIDIUnsignedInteger auto source) { return clamping(source.value()); }

  /// The low bits of `source` up to the width of the storage - 8, 16 or 32, not `bitWidth` - in the checked
  /// form: `UInt7::truncating(0x17F)` is 127, `UInt7::truncating(0x1FF)` raises `overflow`.
  static constexpr Self truncating(PlainInteger auto source) { return Self(static_cast<Storage>(source)); }

  /// No test at all: the caller guarantees the range.
  static constexpr Self unchecked(Storage storage) {
    Self self;
    self.storage_ = storage;
    return self;
  }

  static constexpr Self minimum() { return unchecked(0); }
  static constexpr Self maximum() { return unchecked(mask); }

  /// The bounds in another integer type that holds them, or in a floating-point type (rounded to it).
  template <class T>
    requires PlainInteger<T> || std::floating_point<T>
  static constexpr T minimum() {
    return T{0};
  }
  template <class T>
    requires(PlainInteger<T> && std::numeric_limits<T>::digits >= Bits) || std::floating_point<T>
  static constexpr T maximum() {
    return static_cast<T>(mask);
  }

  constexpr Storage value() const noexcept { return storage_; }

  template <class T>
    requires(PlainInteger<T> && std::numeric_limits<T>::digits >= Bits) || std::floating_point<T>
  constexpr explicit operator T() const noexcept {
    return static_cast<T>(storage_);
  }

  /// A serialised value is one value of the storage type.
  constexpr Storage encoded() const noexcept { return storage_; }

  /// Reads a serialised value back through `exactly`; out of range it fails, without a raise.
  static constexpr internals::Result<Self, DecodingError> decoded(Storage encoded) {
    if (isAbove(encoded)) {
      return DecodingError{Self::typeName};
    }
    return unchecked(encoded);
  }

  /// Sum and product above the maximum raise `overflow`, a difference below 0 raises `underflow`, a zero
  /// divisor raises `divisionByZero`.
  friend constexpr Self operator+(Self a, Self b) { return Self(wide(a) + wide(b)); }
  friend constexpr Self operator-(Self a, Self b) {
    if (b.storage_ > a.storage_) {
      detail::raiseUnderflow(Self::typeName);
    }
    return unchecked(static_cast<Storage>(a.storage_ - b.storage_));
  }
  friend constexpr Self operator*(Self a, Self b) { return Self(wide(a) * wide(b)); }
  friend constexpr Self operator/(Self a, Self b) {
    return unchecked(static_cast<Storage>(a.storage_ / divisor(b)));
  }
  friend constexpr Self operator%(Self a, Self b) {
    return unchecked(static_cast<Storage>(a.storage_ % divisor(b)));
  }

  friend constexpr Self operator&(Self a, Self b) {
    return unchecked(static_cast<Storage>(a.storage_ & b.storage_));
  }
  friend constexpr Self operator|(Self a, Self b) {
    return unchecked(static_cast<Storage>(a.storage_ | b.storage_));
  }
  friend constexpr Self operator^(Self a, Self b) {
    return unchecked(static_cast<Storage>(a.storage_ ^ b.storage_));
  }

  /// Inverts within `bitWidth`: the inverse of 0 is the maximum.
  friend constexpr Self operator~(Self a) { return unchecked(static_cast<Storage>(mask & ~a.storage_)); }

  /// Shifts of the storage, in the checked form: a bit that stands above the top bit of the type afterwards
  /// raises `overflow`, while one shifted out of the storage is lost. A count of the storage's width or more
  /// gives 0; a negative count shifts the other way.
  friend constexpr Self operator<<(Self a, PlainInteger auto count) {
    return Self(shifted(a.storage_, steps(count)));
  }
  friend constexpr Self operator>>(Self a, PlainInteger auto count) {
    return Self(shifted(a.storage_, -steps(count)));
  }

  /// One step on or back, with the checks of `+` and `-`.
  constexpr Self& operator++() { return *this += unchecked(1); }
  constexpr Self& operator--() { return *this -= unchecked(1); }
  constexpr Self operator++(int) { return std::exchange(static_cast<Self&>(*this), self() + unchecked(1)); }
  constexpr Self operator--(int) { return std::exchange(static_cast<Self&>(*this), self() - unchecked(1)); }

  constexpr Self& operator+=(Self other) { return assign(self() + other); }
  constexpr Self& operator-=(Self other) { return assign(self() - other); }
  constexpr Self& operator*=(Self other) { return assign(self() * other); }
  constexpr Self& operator/=(Self other) { return assign(self() / other); }
  constexpr Self& operator%=(Self other) { return assign(self() % other); }
  constexpr Self& operator&=(Self other) { return assign(self() & other); }
  constexpr Self& operator|=(Self other) { return assign(self() | other); }
  constexpr Self& operator^=(Self other) { return assign(self() ^ other); }
  constexpr Self& operator<<=(PlainInteger auto count) { return assign(self() << count); }
  constexpr Self& operator>>=(PlainInteger auto count) { return assign(self() >> count); }

  /// The value `offset` steps on. The offset is checked like a value first, so a negative one raises
  /// `underflow` even where the result would be in range.
  constexpr Self advanced(PlainInteger auto offset) const { return self() + Self(offset); }

  /// Steps from this value to `other`, negative if `other` is the smaller one.
  constexpr std::ptrdiff_t distanceTo(Self other) const {
    return static_cast<std::ptrdiff_t>(other.storage_) - static_cast<std::ptrdiff_t>(storage_);
  }

  /// 0 for zero, else 1.
  constexpr int signum() const { return storage_ == 0 ? 0 : 1; }

  friend constexpr bool operator==(Self a, Self b) noexcept { return a.storage_ == b.storage_; }
  friend constexpr std::strong_ordering operator<=>(Self a, Self b) noexcept {
    return a.storage_ <=> b.storage_;
  }

  /// Decimal digits: "127".
  std::string description() const { return std::to_string(storage_); }

  /// Name and value: "UInt7(127)".
  std::string debugDescription() const { return detail::debugText(Self::typeName, description()); }

 private:
  friend Self;

  static constexpr Storage mask = static_cast<Storage>((std::uint64_t{1} << Bits) - 1);

  constexpr BoundedInteger() = default;

  template <PlainInteger T>
  static constexpr bool isBelow(T source) {
    if constexpr (std::is_signed_v<T>) {
      return source < 0;
    } else {
      return false;
    }
  }

  // Only for a source that isn't below 0.
  template <PlainInteger T>
  static constexpr bool isAbove(T source) {
    using Wide = std::common_type_t<std::make_unsigned_t<T>, std::uint64_t>;
    return static_cast<Wide>(source) > mask;
  }

  // True for not-a-number, too. A type of less precision than Bits rounds the maximum up to 2^Bits, hence the
  // second test.
  template <std::floating_point T>
  static constexpr bool isAbove(T source) {
    return !(source <= maximum<T>()) || isAbove(static_cast<std::uint64_t>(source));
  }

  static constexpr Storage checked(auto source) {
    if (source < 0) {
      detail::raiseUnderflow(Self::typeName);
    }
    if (isAbove(source)) {
      detail::raiseOverflow(Self::typeName);
    }
    return static_cast<Storage>(source);
  }

  static constexpr Storage divisor(Self b) {
    if (b.storage_ == 0) {
      detail::raiseDivisionByZero(Self::typeName);
    }
    return b.storage_;
  }

  static constexpr std::uint64_t wide(Self a) { return a.storage_; }

  // A shift count within plus and minus the storage's width; what lies beyond has the same effect.
  template <PlainInteger T>
  static constexpr int steps(T count) {
    constexpr int width = std::numeric_limits<Storage>::digits;
    if (!isBelow(count)) {
      return count > static_cast<T>(width) ? width : static_cast<int>(count);
    }
    return count < static_cast<T>(-width) ? -width : static_cast<int>(count);
  }

  static constexpr Storage shifted(Storage storage, int steps) {
    const std::uint64_t bits = storage;
    return static_cast<Storage>(steps >= 0 ? bits << steps : bits >> -steps);
  }

  constexpr const Self& self() const { return static_cast<const Self&>(*this); }

  constexpr Self& assign(Self other) {
    storage_ = other.storage_;
    return static_cast<Self&>(*this);
  }

  Storage storage_ = 0;
};

}  // namespace midikit::core

/// Those of an unsigned integer of as many bits, but that it doesn't wrap around.
template <midikit::core::MIDIUnsignedInteger T>
struct std::numeric_limits<T> : std::numeric_limits<typename T::storage_type> {
  static constexpr bool is_modulo = false;
  static constexpr bool traps = true;
  static constexpr int digits = T::bitWidth;
  static constexpr int digits10 = digits * 30103 / 100000;  // the decimal logarithm of 2
  static constexpr T min() noexcept { return T::minimum(); }
  static constexpr T lowest() noexcept { return T::minimum(); }
  static constexpr T max() noexcept { return T::maximum(); }
};

/// Hashes the numeric value.
template <midikit::core::MIDIUnsignedInteger T>
struct std::hash<T> {
  std::size_t operator()(T integer) const noexcept {
    return std::hash<typename T::storage_type>{}(integer.value());
  }
};

#pragma once

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace karvex::foundation {

/// A universally unique identifier (RFC 9562).
struct Uuid {
  std::array<std::uint8_t, 16> bytes{};

  /// A new one of version 4, made of random bits. Any thread.
  static Uuid random();

  /// The usual text of 36 characters, in small letters.
  std::string text() const;

  auto operator<=>(const Uuid&) const = default;
};

}  // namespace karvex::foundation

template <>
struct std::hash<karvex::foundation::Uuid> {
  std::size_t operator()(const karvex::foundation::Uuid& uuid) const noexcept;
};

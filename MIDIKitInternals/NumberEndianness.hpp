#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

/// Integers in lists of bytes. Pure functions.
namespace midikit::internals {

/// The order of an integer's bytes: least significant first, most significant first, or what the processor
/// uses.
enum class NumberEndianness { platformDefault, littleEndian, bigEndian };

/// True if the least significant byte comes first.
constexpr bool isLittleEndian(NumberEndianness endianness) {
  return endianness == NumberEndianness::platformDefault ? std::endian::native == std::endian::little
                                                         : endianness == NumberEndianness::littleEndian;
}

/// The integer that `bytes` hold; signed ones are in two's complement. Nothing if there are more or fewer
/// bytes than the integer has.
template <std::integral Integer>
constexpr std::optional<Integer> integerFromBytes(
    std::span<const std::uint8_t> bytes, NumberEndianness endianness = NumberEndianness::platformDefault) {
  if (bytes.size() != sizeof(Integer)) {
    return std::nullopt;
  }
  std::uint64_t value = 0;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    value = (value << 8) | bytes[isLittleEndian(endianness) ? bytes.size() - 1 - i : i];
  }
  return static_cast<Integer>(value);
}

/// The bytes of `number`, as many as its type has.
template <std::integral Integer>
constexpr std::array<std::uint8_t, sizeof(Integer)> bytesOf(
    Integer number, NumberEndianness endianness = NumberEndianness::platformDefault) {
  std::array<std::uint8_t, sizeof(Integer)> bytes{};
  auto rest = static_cast<std::uint64_t>(number);
  for (auto& byte : bytes) {
    byte = static_cast<std::uint8_t>(rest & 0xFF);
    rest >>= 8;
  }
  if (!isLittleEndian(endianness)) {
    std::ranges::reverse(bytes);
  }
  return bytes;
}

}  // namespace midikit::internals

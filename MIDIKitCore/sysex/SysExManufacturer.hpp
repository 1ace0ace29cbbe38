#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>

#include "MIDIKitCore/numbers/UInt.hpp"
#include "MIDIKitInternals/Exception.hpp"

namespace midikit::core {

/// A few bytes on the stack: a form of an identifier.
template <std::size_t capacity>
class SysExIDBytes {
 public:
  constexpr explicit SysExIDBytes(std::array<std::uint8_t, capacity> bytes, std::size_t size = capacity)
      : bytes_(bytes), size_(size) {}

  constexpr const std::uint8_t* begin() const { return bytes_.data(); }
  constexpr const std::uint8_t* end() const { return bytes_.data() + size_; }
  constexpr const std::uint8_t* data() const { return bytes_.data(); }
  constexpr std::size_t size() const { return size_; }

 private:
  std::array<std::uint8_t, capacity> bytes_;
  std::size_t size_;
};

/// The manufacturer's ID number that opens a system exclusive message (MIDI 1.0 specification): one byte, or
/// three of which the first is 0x00. An immutable value of three bytes; equality tells the two kinds apart.
class SysExManufacturer {
 public:
  static constexpr std::uint8_t lastOneByteID = 0x7D;

  /// A one-byte ID, 1 to 125. Another number stops the program (overflow or underflow): what comes from
  /// outside goes through fromBytes7() or fromBytes8().
  static constexpr SysExManufacturer oneByte(UInt7 id);

  /// A three-byte ID; its first byte is always 0x00 and isn't told. Every pair is valid, 0 and 0 included.
  static constexpr SysExManufacturer threeByte(UInt7 byte2, UInt7 byte3) {
    return SysExManufacturer(0, byte2.value(), byte3.value());
  }

  /// Reads the 7-bit form: one byte from 1 to 125, or 0x00 and two bytes below 0x80. None for anything else.
  static constexpr std::optional<SysExManufacturer> fromBytes7(std::span<const std::uint8_t> bytes);

  /// Reads the 8-bit form: 0x00 and a byte from 1 to 125, or 0x80 + byte2 and byte3. None for anything else.
  static constexpr std::optional<SysExManufacturer> fromBytes8(std::uint8_t first, std::uint8_t second);

  constexpr bool isOneByte() const { return first_ != 0; }

  /// The one-byte ID, or none for a three-byte one.
  constexpr std::optional<UInt7> id() const {
    return isOneByte() ? std::optional(UInt7::unchecked(first_)) : std::nullopt;
  }

  /// The second and third byte of a three-byte ID; 0 for a one-byte one.
  constexpr UInt7 byte2() const { return UInt7::unchecked(byte2_); }
  constexpr UInt7 byte3() const { return UInt7::unchecked(byte3_); }

  /// The form that SysEx7 uses: the ID, or 0x00, byte2, byte3.
  constexpr SysExIDBytes<3> bytes7() const {
    return SysExIDBytes<3>({first_, byte2_, byte3_}, isOneByte() ? 1 : 3);
  }

  /// The form that SysEx8 uses: 0x00 and the ID, or 0x80 + byte2, byte3.
  constexpr std::array<std::uint8_t, 2> bytes8() const {
    return isOneByte() ? std::array<std::uint8_t, 2>{0, first_}
                       : std::array<std::uint8_t, 2>{static_cast<std::uint8_t>(0x80 | byte2_), byte3_};
  }

  /// The 7-bit form, as in "0x00 0x21 0x09".
  std::string description() const;

  friend constexpr bool operator==(SysExManufacturer, SysExManufacturer) = default;

 private:
  constexpr SysExManufacturer(std::uint8_t first, std::uint8_t byte2, std::uint8_t byte3)
      : first_(first), byte2_(byte2), byte3_(byte3) {}

  /// 0 in a three-byte ID.
  std::uint8_t first_;
  std::uint8_t byte2_;
  std::uint8_t byte3_;
};

constexpr SysExManufacturer SysExManufacturer::oneByte(UInt7 id) {
  if (id.value() == 0) {
    internals::raise(internals::Exception::underflow, "a one-byte manufacturer ID is at least 1");
  }
  if (id.value() > lastOneByteID) {
    internals::raise(internals::Exception::overflow, "a one-byte manufacturer ID is at most 125");
  }
  return SysExManufacturer(id.value(), 0, 0);
}

constexpr std::optional<SysExManufacturer> SysExManufacturer::fromBytes7(
    std::span<const std::uint8_t> bytes) {
  if (bytes.size() == 1 && bytes[0] >= 1 && bytes[0] <= lastOneByteID) {
    return SysExManufacturer(bytes[0], 0, 0);
  }
  if (bytes.size() == 3 && bytes[0] == 0 && bytes[1] < 0x80 && bytes[2] < 0x80) {
    return SysExManufacturer(0, bytes[1], bytes[2]);
  }
  return std::nullopt;
}

constexpr std::optional<SysExManufacturer> SysExManufacturer::fromBytes8(std::uint8_t first,
                                                                         std::uint8_t second) {
  if (first == 0 && second >= 1 && second <= lastOneByteID) {
    return SysExManufacturer(second, 0, 0);
  }
  if (first >= 0x80 && second < 0x80) {
    return SysExManufacturer(0, first & 0x7F, second);
  }
  return std::nullopt;
}

}  // namespace midikit::core

template <>
struct std::hash<midikit::core::SysExManufacturer> {
  constexpr std::size_t operator()(midikit::core::SysExManufacturer manufacturer) const noexcept {
    const auto id = manufacturer.bytes8();
    return std::size_t{id[0]} << 8 | id[1];
  }
};

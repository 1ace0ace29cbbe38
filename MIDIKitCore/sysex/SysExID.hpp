#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <variant>

#include "MIDIKitCore/sysex/SysExManufacturer.hpp"
#include "MIDIKitCore/sysex/UniversalSysExType.hpp"

namespace midikit::core {

/// What opens a system exclusive message: a manufacturer's ID or one of the two universal IDs.
class SysExID {
 public:
  static constexpr SysExID manufacturer(SysExManufacturer manufacturer) { return SysExID(manufacturer); }
  static constexpr SysExID universal(UniversalSysExType type) { return SysExID(type); }

  /// Reads the 7-bit form, an array of one or three bytes. None for an array that is no identifier.
  static constexpr std::optional<SysExID> fromBytes7(std::span<const std::uint8_t> bytes);

  /// Reads the 8-bit form. None for a pair that is no identifier.
  static constexpr std::optional<SysExID> fromBytes8(std::uint8_t first, std::uint8_t second);

  constexpr std::optional<SysExManufacturer> manufacturer() const {
    const auto* const held = std::get_if<SysExManufacturer>(&case_);
    return held != nullptr ? std::optional(*held) : std::nullopt;
  }

  constexpr std::optional<UniversalSysExType> universal() const {
    const auto* const held = std::get_if<UniversalSysExType>(&case_);
    return held != nullptr ? std::optional(*held) : std::nullopt;
  }

  /// The form that SysEx7 uses, one byte or three.
  constexpr SysExIDBytes<3> bytes7() const;

  /// The form that SysEx8 uses.
  constexpr std::array<std::uint8_t, 2> bytes8() const;

  /// As in "manufacturer(0x41)" and "universal(realTime)".
  std::string description() const;

  friend constexpr bool operator==(const SysExID&, const SysExID&) = default;

 private:
  using Case = std::variant<SysExManufacturer, UniversalSysExType>;
  constexpr explicit SysExID(Case value) : case_(value) {}

  Case case_;
};

constexpr std::optional<SysExID> SysExID::fromBytes7(std::span<const std::uint8_t> bytes) {
  if (const auto manufacturer = SysExManufacturer::fromBytes7(bytes)) {
    return SysExID(*manufacturer);
  }
  const auto type = bytes.size() == 1 ? universalSysExType(bytes[0]) : std::nullopt;
  return type ? std::optional(SysExID(*type)) : std::nullopt;
}

constexpr std::optional<SysExID> SysExID::fromBytes8(std::uint8_t first, std::uint8_t second) {
  if (const auto manufacturer = SysExManufacturer::fromBytes8(first, second)) {
    return SysExID(*manufacturer);
  }
  const auto type = first == 0 ? universalSysExType(second) : std::nullopt;
  return type ? std::optional(SysExID(*type)) : std::nullopt;
}

constexpr SysExIDBytes<3> SysExID::bytes7() const {
  if (const auto held = manufacturer()) {
    return held->bytes7();
  }
  return SysExIDBytes<3>({static_cast<std::uint8_t>(*universal())}, 1);
}

constexpr std::array<std::uint8_t, 2> SysExID::bytes8() const {
  if (const auto held = manufacturer()) {
    return held->bytes8();
  }
  return {0, static_cast<std::uint8_t>(*universal())};
}

}  // namespace midikit::core

template <>
struct std::hash<midikit::core::SysExID> {
  constexpr std::size_t operator()(const midikit::core::SysExID& id) const noexcept {
    const auto bytes = id.bytes8();
    return std::size_t{bytes[0]} << 8 | bytes[1];
  }
};

#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace midikit::core {

/// The two universal system exclusive IDs of the MIDI 1.0 specification, with their ID number as raw value.
enum class UniversalSysExType : std::uint8_t { nonRealTime = 0x7E, realTime = 0x7F };

/// The type with that ID number; none for any number but 0x7E and 0x7F.
constexpr std::optional<UniversalSysExType> universalSysExType(std::uint8_t rawValue) {
  if (rawValue < 0x7E || rawValue > 0x7F) {
    return std::nullopt;
  }
  return static_cast<UniversalSysExType>(rawValue);
}

/// "realTime" or "nonRealTime".
constexpr std::string_view description(UniversalSysExType type) {
  return type == UniversalSysExType::realTime ? "realTime" : "nonRealTime";
}

}  // namespace midikit::core

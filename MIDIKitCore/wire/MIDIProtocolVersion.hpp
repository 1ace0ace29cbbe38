#pragma once

#include <cstdint>
#include <string_view>

namespace midikit::core {

/// Which of the two protocols channel voice messages are in.
enum class MIDIProtocolVersion : std::uint8_t { midi1_0, midi2_0 };

/// "MIDI 1.0" or "MIDI 2.0".
constexpr std::string_view description(MIDIProtocolVersion version) {
  return version == MIDIProtocolVersion::midi1_0 ? "MIDI 1.0" : "MIDI 2.0";
}

}  // namespace midikit::core

#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "MIDIKitIO/platform/MIDIServiceTypes.hpp"

namespace midikit::io::engine {

/// The words of one message in that protocol: channel voice messages are translated, all others stay. None
/// where the protocol has nothing like it, and several messages where it takes them. A note-on of MIDI 1.0
/// with velocity 0 becomes a note-off of MIDI 2.0, where velocity 0 sounds.
std::vector<std::uint32_t> translated(std::span<const std::uint32_t> message, MIDIProtocolID protocol);

/// The MIDI 1.0 bytes of one message other than a system exclusive one; none where they have nothing like it.
std::vector<std::uint8_t> translatedToBytes(std::span<const std::uint32_t> message);

}  // namespace midikit::io::engine

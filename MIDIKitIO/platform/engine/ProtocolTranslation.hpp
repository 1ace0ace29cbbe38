#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "MIDIKitCore/MIDI2Parser.hpp"
#include "MIDIKitCore/MIDIEvent.hpp"
#include "MIDIKitIO/platform/MIDIServiceTypes.hpp"

namespace midikit::io::engine {

/// Translates single messages of Universal MIDI Packets, other than system exclusive ones. A result is valid
/// until the next call. The memory serves for the next message, so calls soon stop allocating. Not locked.
class ProtocolTranslator {
 public:
  /// The words of the message in that protocol: channel voice messages are translated, all others stay. None
  /// where the protocol has nothing like it, and several messages where it takes them. A note-on of MIDI 1.0
  /// with velocity 0 becomes a note-off of MIDI 2.0, where velocity 0 sounds.
  std::span<const std::uint32_t> toProtocol(std::span<const std::uint32_t> message, MIDIProtocolID protocol);

  /// The MIDI 1.0 bytes of the message; none where they have nothing like it.
  std::span<const std::uint8_t> toBytes(std::span<const std::uint32_t> message);

 private:
  void parse(std::span<const std::uint32_t> message);

  core::MIDI2Parser parser_;
  std::vector<core::MIDIEvent> events_;
  std::vector<std::uint32_t> words_;
  std::vector<std::uint8_t> bytes_;
  std::array<std::uint8_t, 3> short_{};
};

}  // namespace midikit::io::engine

#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "MIDIKitCore/numbers/UInt.hpp"
#include "MIDIKitCore/sysex/SysExEvents.hpp"
#include "MIDIKitCore/wire/MIDIUMPFields.hpp"

namespace midikit::core {

// A system exclusive message as Universal MIDI Packets: `complete` if it fits into one, else `start`, any
// number of `continue`, and `end`. SysEx7 has two words a packet, of message type 3 with at most 6 bytes;
// SysEx8 has four words, of message type 5 with at most 13 bytes behind the stream ID.

/// How many words the message takes.
std::size_t sysExWordCount(const SysEx7& event);
std::size_t sysExWordCount(const UniversalSysEx7& event);
std::size_t sysExWordCount(const SysEx8& event);
std::size_t sysExWordCount(const UniversalSysEx8& event);

/// Writes the message's words to the beginning of `into`, which has room for sysExWordCount() of them. Never
/// allocates.
void writeSysExWords(const SysEx7& event, std::span<std::uint32_t> into);
void writeSysExWords(const UniversalSysEx7& event, std::span<std::uint32_t> into);
void writeSysExWords(const SysEx8& event, std::span<std::uint32_t> into);
void writeSysExWords(const UniversalSysEx8& event, std::span<std::uint32_t> into);

/// The same for a 7-bit message of which only the body is known, all that stands between 0xF0 and 0xF7. One
/// without a byte takes a packet, too.
std::size_t sysEx7WordCount(std::size_t bodySize);
void writeSysEx7Words(std::span<const std::uint8_t> body, UInt4 group, std::span<std::uint32_t> into);

/// What a packet of SysEx7 carries.
struct SysEx7Piece {
  MIDIUMPSysExStatusField status;
  UInt4 group;
  std::span<const std::uint8_t> bytes;  ///< of the packet

  /// None for a packet that isn't well-formed. Its message type isn't looked at.
  static std::optional<SysEx7Piece> read(std::span<const std::uint8_t, 8> packet);
};

}  // namespace midikit::core

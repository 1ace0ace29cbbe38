#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "MIDIKitCore/SysExEvents.hpp"

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

}  // namespace midikit::core

#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "MIDIKitCore/MIDIEvent.hpp"
#include "MIDIKitIO/packets/AnyMIDIPacket.hpp"

/// What was received, as one line of a log. Pure functions.
namespace midikit::io {

/// `noteOn(0x3C, vel: midi1(64), chan: 0x0, group: 0x0), stop(group: 0x0) timeStamp:5 source:"Keyboard"`.
/// Without a known source, the line ends after the time stamp.
///
/// Thread-safe: yes.
/// Realtime-safe: no, it allocates.
std::string textOf(std::span<const core::MIDIEvent> events, std::uint64_t timeStamp,
                   const MIDIPacketSource& source);

/// `90 3C 40 timeStamp:5 source:"Keyboard"`
///
/// Thread-safe: yes.
/// Realtime-safe: no, it allocates.
std::string textOf(const AnyMIDIPacket& packet);

}  // namespace midikit::io

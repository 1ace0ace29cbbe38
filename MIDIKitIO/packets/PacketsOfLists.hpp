#pragma once

#include "MIDIKitCore/wire/MIDIProtocolVersion.hpp"
#include "MIDIKitIO/packets/AnyMIDIPacket.hpp"
#include "MIDIKitIO/platform/MIDIService.hpp"

/// The platform's lists as packets. They copy all that they need, so the list may end.
namespace midikit::io {

/// The packets of a byte-oriented list, in order. `token` is null or that of a ConnectionNumber, which is
/// asked for the source once for each packet.
///
/// Thread-safe: yes.
/// Realtime-safe: no, it asks the service for the source, and allocates for a second packet and for more than
/// 15 bytes.
AnyMIDIPackets packetsOf(const MIDIPacketList& list, ConnectionToken token, const MIDIService& service);

/// One packet for each message of a word-oriented list, in order. The rest of the words that share a time
/// stamp is left out from the first message on that is cut off or that is of a type above 5. `token` is as
/// above; the source is asked for once.
///
/// Thread-safe: yes.
/// Realtime-safe: no, it asks the service for the source, and allocates for a second packet and for four
/// words.
AnyMIDIPackets packetsOf(const MIDIEventList& list, ConnectionToken token, const MIDIService& service);

/// The protocol that goes along with the packets of a list: MIDI 1.0 by its number, MIDI 2.0 by any other.
///
/// Thread-safe: yes.
/// Realtime-safe: yes.
core::MIDIProtocolVersion protocolOf(const MIDIEventList& list);

}  // namespace midikit::io

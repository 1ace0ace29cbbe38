#pragma once

#include <span>

#include "MIDIKitCore/wire/MIDIProtocolVersion.hpp"
#include "MIDIKitIO/packets/AnyMIDIPacket.hpp"

namespace midikit::io {

/// What takes the packets of a port on the manager's eventQueue. It belongs to that queue alone, so its calls
/// come one at a time and are never reentered, but on changing threads. It may be let go of on any thread.
class MIDIReceiverProtocol {
 public:
  virtual ~MIDIReceiverProtocol() = default;
  MIDIReceiverProtocol(const MIDIReceiverProtocol&) = delete;
  MIDIReceiverProtocol& operator=(const MIDIReceiverProtocol&) = delete;

  /// Packets of MIDI 1.0 bytes, in their order. They live during the call alone. Never throws.
  ///
  /// Thread-safe: on eventQueue alone.
  /// Realtime-safe: no, it calls what the user of the layer gave it.
  virtual void packetsReceived(std::span<const AnyMIDIPacket> packets) = 0;

  /// Universal packets, in their order, with the protocol of their list. They live during the call alone.
  /// Never throws.
  ///
  /// Thread-safe: on eventQueue alone.
  /// Realtime-safe: no, it calls what the user of the layer gave it.
  virtual void universalPacketsReceived(std::span<const AnyMIDIPacket> packets,
                                        core::MIDIProtocolVersion protocol) = 0;

 protected:
  MIDIReceiverProtocol() = default;
};

}  // namespace midikit::io

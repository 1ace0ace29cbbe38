#pragma once

#include <cstdint>
#include <span>

#include "MIDIKitCore/MIDIEvent.hpp"
#include "MIDIKitIO/packets/AnyMIDIPacket.hpp"

namespace midikit::io {

/// An object outside of the layer that is handed received events.
class ReceivesMIDIEvents {
 public:
  virtual ~ReceivesMIDIEvents() = default;

  /// The events of one packet, at least one, with the packet's time stamp in units of
  /// MIDIService::machAbsoluteTime. The list and `source` live during the call alone: copy what is to be
  /// kept, which doesn't allocate for an event or for the source. On the manager's eventQueue, one call at a
  /// time and never reentered, on changing threads; it must not wait for that queue. What it throws goes into
  /// the debug log, and the next events come all the same.
  virtual void eventsReceived(std::span<const core::MIDIEvent> events, std::uint64_t timeStamp,
                              const MIDIPacketSource& source) = 0;
};

}  // namespace midikit::io

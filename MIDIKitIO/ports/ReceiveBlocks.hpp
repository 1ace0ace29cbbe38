#pragma once

#include <memory>

#include "MIDIKitIO/platform/MIDIService.hpp"
#include "MIDIKitIO/receive/MIDIReceiverProtocol.hpp"
#include "foundation/run/Queue.hpp"

namespace midikit::io::internal {

/// The blocks of virtual inputs and input connections. A block copies its list into packets on the service's
/// thread, and posts them to eventQueue for the handler. It keeps neither of the two: without the queue, and
/// without the handler when the queue gets there, packets are dropped.
struct ReceiveBlocks {
  MIDIReadBlock forPackets() const;
  MIDIReceiveBlock forEvents() const;

  /// Runs the blocks, so it outlives them.
  const MIDIService& service;
  std::weak_ptr<karvex::foundation::Queue> eventQueue;
  std::weak_ptr<MIDIReceiverProtocol> handler;
};

}  // namespace midikit::io::internal

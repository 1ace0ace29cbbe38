#include "MIDIKitIO/ports/ReceiveBlocks.hpp"

#include <utility>

#include "MIDIKitIO/packets/PacketsOfLists.hpp"

namespace midikit::io::internal {

MIDIReadBlock ReceiveBlocks::forPackets() const {
  return [*this](const MIDIPacketList& list, ConnectionToken token) {
    auto packets = packetsOf(list, token, service);
    if (const auto queue = eventQueue.lock()) {
      queue->post([handler = handler, packets = std::move(packets)] {
        if (const auto receiver = handler.lock()) {
          receiver->packetsReceived(packets);
        }
      });
    }
  };
}

MIDIReceiveBlock ReceiveBlocks::forEvents() const {
  return [*this](const MIDIEventList& list, ConnectionToken token) {
    auto packets = packetsOf(list, token, service);
    if (const auto queue = eventQueue.lock()) {
      queue->post([handler = handler, packets = std::move(packets), protocol = protocolOf(list)] {
        if (const auto receiver = handler.lock()) {
          receiver->universalPacketsReceived(packets, protocol);
        }
      });
    }
  };
}

}  // namespace midikit::io::internal

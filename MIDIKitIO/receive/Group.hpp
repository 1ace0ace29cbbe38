#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "MIDIKitIO/receive/MIDIReceiverProtocol.hpp"

namespace midikit::io::receive {

/// Hands each list to several handlers in turn.
class Group final : public MIDIReceiverProtocol {
 public:
  explicit Group(std::vector<std::shared_ptr<MIDIReceiverProtocol>> receiveHandlers)
      : receiveHandlers_(std::move(receiveHandlers)) {}

  void packetsReceived(std::span<const AnyMIDIPacket> packets) override {
    for (const auto& handler : receiveHandlers_) {
      handler->packetsReceived(packets);
    }
  }
  void universalPacketsReceived(std::span<const AnyMIDIPacket> packets,
                                core::MIDIProtocolVersion protocol) override {
    for (const auto& handler : receiveHandlers_) {
      handler->universalPacketsReceived(packets, protocol);
    }
  }

 private:
  std::vector<std::shared_ptr<MIDIReceiverProtocol>> receiveHandlers_;
};

}  // namespace midikit::io::receive

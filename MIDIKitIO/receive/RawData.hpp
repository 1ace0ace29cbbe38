#pragma once

#include <utility>

#include "MIDIKitIO/receive/MIDIReceiver.hpp"
#include "MIDIKitIO/receive/MIDIReceiverProtocol.hpp"
#include "MIDIKitIO/receive/UserCall.hpp"

namespace midikit::io::receive {

/// Hands each packet to a callable.
class RawData final : public MIDIReceiverProtocol {
 public:
  explicit RawData(MIDIReceiver::PacketHandler handler) : handler_(std::move(handler)) {}

  void packetsReceived(std::span<const AnyMIDIPacket> packets) override { handOver(packets); }
  void universalPacketsReceived(std::span<const AnyMIDIPacket> packets,
                                core::MIDIProtocolVersion /*protocol*/) override {
    handOver(packets);
  }

 private:
  void handOver(std::span<const AnyMIDIPacket> packets) {
    for (const auto& packet : packets) {
      if (handler_) {
        callUser([&] { handler_(packet); });
      }
    }
  }

  MIDIReceiver::PacketHandler handler_;
};

}  // namespace midikit::io::receive

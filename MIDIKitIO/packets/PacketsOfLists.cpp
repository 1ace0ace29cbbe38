#include "MIDIKitIO/packets/PacketsOfLists.hpp"

#include <cstddef>
#include <span>

#include "MIDIKitIO/packets/ConnectionNumber.hpp"
#include "MIDIKitIO/packets/UniversalMessages.hpp"

namespace midikit::io {
namespace {

MIDIPacketSource sourceOf(ConnectionToken token, const MIDIService& service) {
  const auto* number = ConnectionNumber::of(token);
  return number != nullptr ? number->source(service) : nullptr;
}

}  // namespace

AnyMIDIPackets packetsOf(const MIDIPacketList& list, ConnectionToken token, const MIDIService& service) {
  AnyMIDIPackets packets;
  packets.reserve(list.packetCount());
  for (std::size_t i = 0; i < list.packetCount(); ++i) {
    const MIDIPacketView view = list.packet(i);
    packets.push_back(AnyMIDIPacket::packet({.bytes = MIDIPacketBytes(view.bytes),
                                             .timeStamp = view.timeStamp,
                                             .source = sourceOf(token, service)}));
  }
  return packets;
}

AnyMIDIPackets packetsOf(const MIDIEventList& list, ConnectionToken token, const MIDIService& service) {
  AnyMIDIPackets packets;
  if (list.packets.empty()) {
    return packets;
  }
  const auto source = sourceOf(token, service);
  for (const MIDIEventPacket& packet : list.packets) {
    forEachUniversalMessage(wordsOf(packet), [&](auto words) {
      packets.push_back(
          AnyMIDIPacket::universalPacket(UniversalMIDIPacketData(words, packet.timeStamp, source)));
    });
  }
  return packets;
}

core::MIDIProtocolVersion protocolOf(const MIDIEventList& list) {
  return list.protocol == MIDIProtocolID::midi1_0 ? core::MIDIProtocolVersion::midi1_0
                                                  : core::MIDIProtocolVersion::midi2_0;
}

}  // namespace midikit::io

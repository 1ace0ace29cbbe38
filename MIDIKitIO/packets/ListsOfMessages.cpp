#include "MIDIKitIO/packets/ListsOfMessages.hpp"

#include <algorithm>
#include <string>

#include "MIDIKitIO/packets/PlatformProtocol.hpp"
#include "MIDIKitInternals/MIDIKitInternalError.hpp"

namespace midikit::io {
namespace {

using internals::MIDIKitInternalError;

void add(MIDIPacketList& list, std::uint64_t timeStamp, std::span<const std::uint8_t> message) {
  if (!list.add(timeStamp, message)) {
    throw MIDIKitInternalError::malformed("Error adding MIDI packet to packet list.");
  }
}

}  // namespace

MIDIPacketList packetListOf(std::span<const std::uint8_t> message, std::uint64_t timeStamp) {
  MIDIPacketList list(MIDIPacketList::headerSize + MIDIPacketList::packetHeaderSize + message.size());
  add(list, timeStamp, message);
  return list;
}

MIDIPacketList packetListOf(std::span<const std::span<const std::uint8_t>> messages,
                            std::uint64_t timeStamp) {
  std::size_t size = MIDIPacketList::headerSize;
  for (const auto& message : messages) {
    size += MIDIPacketList::packetHeaderSize + message.size();
  }
  if (size > maximumPacketListSize) {
    throw MIDIKitInternalError::malformed("Data is too large (" + std::to_string(size) +
                                          " bytes). Maximum size is " +
                                          std::to_string(maximumPacketListSize) + " bytes.");
  }
  MIDIPacketList list(size);
  for (const auto& message : messages) {
    add(list, timeStamp, message);
  }
  return list;
}

MIDIEventList eventListOf(std::span<const std::uint32_t> words, core::MIDIProtocolVersion protocol,
                          std::uint64_t timeStamp) {
  if (words.empty()) {
    throw MIDIKitInternalError::malformed("A Universal MIDI Packet cannot contain zero UInt32 words.");
  }
  if (words.size() > maximumEventPacketWords) {
    throw MIDIKitInternalError::malformed(
        "A Universal MIDI Packet cannot contain more than 64 UInt32 words.");
  }
  MIDIEventList list{.protocol = internal::platformProtocol(protocol)};
  auto& packet = list.packets.emplace_back();
  packet.timeStamp = timeStamp;
  packet.wordCount = static_cast<std::uint32_t>(words.size());
  std::ranges::copy(words, packet.words.begin());
  return list;
}

}  // namespace midikit::io

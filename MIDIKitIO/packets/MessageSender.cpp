#include "MIDIKitIO/packets/MessageSender.hpp"

#include <algorithm>
#include <array>
#include <cstddef>

#include "MIDIKitCore/MIDIIOError.hpp"
#include "MIDIKitIO/packets/ListsOfMessages.hpp"
#include "MIDIKitIO/packets/PlatformProtocol.hpp"
#include "MIDIKitIO/packets/UniversalMessages.hpp"
#include "MIDIKitIO/platform/SendMoment.hpp"

namespace midikit::io::internal {

using core::MIDIEvent;
using core::MIDIIOError;

void MessageSender::sendEvent(const MIDIEvent& event) {
  if (isLegacy()) {
    sendAsBytes(event);
  } else {
    sendAsWords(event);
  }
}

void MessageSender::sendEvents(std::span<const MIDIEvent> events) {
  if (isLegacy() && std::ranges::none_of(events, &MIDIEvent::isSysEx)) {
    return sendAsBytes(events);
  }
  for (const auto& event : events) {
    sendEvent(event);
  }
}

void MessageSender::sendRawMessage(std::span<const std::uint8_t> message) {
  requireLegacy();
  const SendMoment now(service_);
  sendPacketList(packetListOf(message, now.timeStamp()));
}

void MessageSender::sendRawMessages(std::span<const std::vector<std::uint8_t>> messages) {
  requireLegacy();
  const std::vector<Bytes> spans(messages.begin(), messages.end());
  const SendMoment now(service_);
  sendPacketList(packetListOf(spans, now.timeStamp()));
}

void MessageSender::sendUniversalWords(std::span<const std::uint32_t> words) {
  const auto protocol = api_.protocol();
  if (!protocol) {
    throw MIDIIOError::internalInconsistency(
        "Universal MIDI Packet words cannot be sent using old Core MIDI API.");
  }
  const SendMoment now(service_);
  sendEventList(eventListOf(words, *protocol, now.timeStamp()));
}

void MessageSender::requireLegacy() const {
  if (!isLegacy()) {
    throw MIDIIOError::internalInconsistency("Raw bytes cannot be sent using new Core MIDI API.");
  }
}

void MessageSender::sendAsBytes(const MIDIEvent& event) {
  std::array<std::uint8_t, MIDIEvent::maximumShortBytes> bytes{};
  const std::size_t size = event.writeMIDI1Bytes(bytes);
  if (size <= bytes.size()) {
    sendRawMessage(std::span(bytes).first(size));
  } else {
    sendRawMessage(event.midi1Bytes());
  }
}

void MessageSender::sendAsBytes(std::span<const MIDIEvent> events) {
  std::vector<std::uint8_t> bytes(events.size() * MIDIEvent::maximumShortBytes);
  std::vector<Bytes> messages;
  messages.reserve(events.size());
  std::span<std::uint8_t> room(bytes);
  for (const auto& event : events) {
    const std::size_t size = event.writeMIDI1Bytes(room);
    messages.emplace_back(room.first(size));
    room = room.subspan(size);
  }
  const SendMoment now(service_);
  sendPacketList(packetListOf(messages, now.timeStamp()));
}

void MessageSender::sendAsWords(const MIDIEvent& event) {
  requireInterface(api_, service_.platformVersion());
  const auto protocol = *api_.protocol();
  std::array<std::uint32_t, MIDIEvent::maximumShortWords> words{};
  const std::size_t count = event.writeUMPWords(protocol, words);
  if (count <= words.size()) {
    return sendPackets(std::span(words).first(count));
  }
  std::vector<std::uint32_t> manyWords;
  event.appendUMPWords(protocol, manyWords);
  sendPackets(manyWords);
}

void MessageSender::sendPackets(std::span<const std::uint32_t> words) {
  forEachUniversalMessage(words, [this](auto packet) { sendUniversalWords(packet); });
}

}  // namespace midikit::io::internal

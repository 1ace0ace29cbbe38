#include "MIDIKitIO/platform/engine/ListConversion.hpp"

#include <algorithm>
#include <array>

#include "MIDIKitCore/MIDI1Status.hpp"
#include "MIDIKitCore/MIDIUMPFields.hpp"
#include "MIDIKitCore/SysExPackets.hpp"
#include "MIDIKitCore/UMPWords.hpp"
#include "MIDIKitIO/platform/engine/UmpMessages.hpp"

namespace midikit::io::engine {

namespace {

using core::MIDIUMPMessageType;

/// A message other than a system exclusive one, in group 0.
std::uint32_t wordOf(std::span<const std::uint8_t> message) {
  const auto at = [message](std::size_t index) -> std::uint32_t {
    return index < message.size() ? message[index] : 0;
  };
  const auto type = at(0) >= core::firstSystemStatus ? MIDIUMPMessageType::systemRealTimeAndCommon
                                                     : MIDIUMPMessageType::midi1ChannelVoice;
  return static_cast<std::uint32_t>(type) << 28U | at(0) << 16U | at(1) << 8U | at(2);
}

void appendSysEx7(MIDIEventList& list, std::uint64_t timeStamp, std::span<const std::uint8_t> body) {
  std::vector<std::uint32_t> words(core::sysEx7WordCount(body.size()));
  core::writeSysEx7Words(body, {}, words);
  appendMessages(list, timeStamp, words);
}

MIDIPacketList packetsOf(std::span<const TimedMessage> messages) {
  std::size_t size = MIDIPacketList::headerSize;
  for (const auto& message : messages) {
    size += MIDIPacketList::packetHeaderSize + message.bytes.size();
  }
  MIDIPacketList list(size);
  for (const auto& message : messages) {
    static_cast<void>(list.add(message.timeStamp, message.bytes));  // There is room for all.
  }
  return list;
}

bool endsInsideSysEx(std::span<const std::uint8_t> bytes) {
  const auto last = std::find_if(bytes.rbegin(), bytes.rend(), [](auto byte) {
    return byte >= core::firstStatus && byte < core::firstRealTimeStatus;
  });
  return last != bytes.rend() && *last == core::sysExStatus;
}

bool splitsSysEx(const MIDIPacketList& list) {
  for (std::size_t i = 0; i < list.packetCount(); ++i) {
    if (endsInsideSysEx(list.packet(i).bytes)) {
      return true;
    }
  }
  return false;
}

}  // namespace

MIDIEventList ListConverter::toWords(const MIDIList& list, MIDIProtocolID protocol) {
  MIDIEventList converted{.protocol = protocol};
  if (const auto* words = std::get_if<MIDIEventList>(&list)) {
    if (words->protocol == protocol) {
      return *words;
    }
    for (const auto& packet : words->packets) {
      forEachMessage(packet, [&](auto message) { appendTranslated(converted, packet.timeStamp, message); });
    }
    return converted;
  }
  for (const auto& message : messagesIn(std::get<MIDIPacketList>(list))) {
    if (message.bytes.front() == core::sysExStatus) {
      appendSysEx7(converted, message.timeStamp,
                   std::span(message.bytes).subspan(1, message.bytes.size() - 2));
    } else {
      const std::array<std::uint32_t, 1> word = {wordOf(message.bytes)};
      appendTranslated(converted, message.timeStamp, word);
    }
  }
  return converted;
}

MIDIPacketList ListConverter::toBytes(const MIDIList& list) {
  if (const auto* bytes = std::get_if<MIDIPacketList>(&list)) {
    const bool isWhole = splitter_.isIdle() && !splitsSysEx(*bytes);
    return isWhole ? *bytes : packetsOf(messagesIn(*bytes));
  }
  std::vector<TimedMessage> messages;
  for (const auto& packet : std::get<MIDIEventList>(list).packets) {
    forEachMessage(packet, [&](auto message) { takeMessage(packet.timeStamp, message, messages); });
  }
  return packetsOf(messages);
}

std::vector<TimedMessage> ListConverter::messagesIn(const MIDIPacketList& list) {
  std::vector<TimedMessage> messages;
  for (std::size_t i = 0; i < list.packetCount(); ++i) {
    splitter_.split(list.packet(i).timeStamp, list.packet(i).bytes, messages);
  }
  return messages;
}

void ListConverter::appendTranslated(MIDIEventList& list, std::uint64_t timeStamp,
                                     std::span<const std::uint32_t> message) {
  appendMessages(list, timeStamp, translator_.toProtocol(message, list.protocol));
}

void ListConverter::takeMessage(std::uint64_t timeStamp, std::span<const std::uint32_t> words,
                                std::vector<TimedMessage>& out) {
  switch (static_cast<MIDIUMPMessageType>(core::umpMessageType(words.front()))) {
    case MIDIUMPMessageType::data64bit:
      takeSysEx7(timeStamp, words, out);
      break;
    case MIDIUMPMessageType::systemRealTimeAndCommon:
    case MIDIUMPMessageType::midi1ChannelVoice:
    case MIDIUMPMessageType::midi2ChannelVoice:
      ByteSplitter().split(timeStamp, translator_.toBytes(words), out);
      break;
    default:  // Bytes have no form for it.
      break;
  }
}

void ListConverter::takeSysEx7(std::uint64_t timeStamp, std::span<const std::uint32_t> words,
                               std::vector<TimedMessage>& out) {
  std::array<std::uint8_t, 8> packet{};
  core::writeUMPBytes(words, packet);
  const auto piece = core::SysEx7Piece::read(packet);
  if (!piece) {
    return;
  }
  auto& buffer = sysEx7_[piece->group];
  if (const auto body = buffer.take(piece->status, piece->bytes, longestSysEx)) {
    auto& message = out.emplace_back(TimedMessage{.timeStamp = timeStamp}).bytes;
    message.reserve(body->size() + 2);
    message.push_back(core::sysExStatus);
    message.insert(message.end(), body->begin(), body->end());
    message.push_back(core::sysExEndStatus);
    if (piece->status == core::MIDIUMPSysExStatusField::end) {
      buffer.clear();
    }
  }
  if (buffer.empty()) {
    sysEx7_.erase(piece->group);
  }
}

}  // namespace midikit::io::engine

#include "MIDIKitIO/platform/engine/ListConversion.hpp"

#include <algorithm>
#include <array>
#include <vector>

#include "MIDIKitCore/detail/SysExPackets.hpp"
#include "MIDIKitCore/wire/MIDI1Status.hpp"
#include "MIDIKitCore/wire/MIDIUMPFields.hpp"
#include "MIDIKitCore/wire/UMPWords.hpp"
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

void appendSysEx7Words(MIDIEventList& list, std::uint64_t timeStamp, std::span<const std::uint8_t> body) {
  std::vector<std::uint32_t> words(core::sysEx7WordCount(body.size()));
  core::writeSysEx7Words(body, {}, words);
  appendMessages(list, timeStamp, words);
}

/// A packet of its own. The list grows with it.
void appendPacket(MIDIPacketList& list, std::uint64_t timeStamp, std::span<const std::uint8_t> bytes) {
  static_cast<void>(list.add(timeStamp, bytes));
}

/// The bytes of a MIDI 1.0 channel voice message are those of its word; what is no message has none.
void appendChannelVoice(MIDIPacketList& list, std::uint64_t timeStamp, std::uint32_t word) {
  std::array<std::uint8_t, sizeof(word)> wordBytes{};
  const auto bytes = core::writeUMPBytes(std::span(&word, 1), wordBytes).subspan(1);
  const auto message = bytes.first(core::midi1MessageSize(bytes.front()));
  if (core::isChannelVoiceMessage(message)) {
    appendPacket(list, timeStamp, message);
  }
}

/// Each of the messages in a packet of its own; nearly always there is one.
void appendMessages(MIDIPacketList& list, std::uint64_t timeStamp, std::span<const std::uint8_t> bytes) {
  if (core::isChannelVoiceMessage(bytes)) {
    appendPacket(list, timeStamp, bytes);
  } else {
    ByteSplitter().split(bytes, [&](auto message) { appendPacket(list, timeStamp, message); });
  }
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

const MIDIEventList& ListConverter::toWords(MIDIListView list, MIDIProtocolID protocol, MIDIEventList& room) {
  const auto* words = std::get_if<const MIDIEventList*>(&list);
  if (words != nullptr && (*words)->protocol == protocol) {
    return **words;
  }
  room = {.protocol = protocol, .packets = {}};
  if (words != nullptr) {
    for (const auto& packet : (*words)->packets) {
      const auto finished = room.packets.size();
      forEachMessage(packet, [&](auto message) {
        appendMessages(room, packet.timeStamp, translator_.toProtocol(message, protocol), finished);
      });
    }
    return room;
  }
  const auto& bytes = *std::get<const MIDIPacketList*>(list);
  for (std::size_t i = 0; i < bytes.packetCount(); ++i) {
    const auto packet = bytes.packet(i);
    splitter_.split(packet.bytes, [&](std::span<const std::uint8_t> message) {
      if (message.front() == core::sysExStatus) {
        appendSysEx7Words(room, packet.timeStamp, message.subspan(1, message.size() - 2));
      } else {
        appendMessages(room, packet.timeStamp, translator_.toProtocol(std::array{wordOf(message)}, protocol));
      }
    });
  }
  return room;
}

const MIDIPacketList& ListConverter::toBytes(MIDIListView list, MIDIPacketList& room) {
  const auto* bytes = std::get_if<const MIDIPacketList*>(&list);
  if (bytes != nullptr && splitter_.isIdle() && !splitsSysEx(**bytes)) {
    return **bytes;
  }
  if (bytes == nullptr) {
    for (const auto& packet : std::get<const MIDIEventList*>(list)->packets) {
      forEachMessage(packet, [&](auto message) { appendBytes(room, packet.timeStamp, message); });
    }
    return room;
  }
  for (std::size_t i = 0; i < (*bytes)->packetCount(); ++i) {
    const auto packet = (*bytes)->packet(i);
    splitter_.split(packet.bytes, [&](auto message) { appendPacket(room, packet.timeStamp, message); });
  }
  return room;
}

void ListConverter::appendBytes(MIDIPacketList& list, std::uint64_t timeStamp,
                                std::span<const std::uint32_t> words) {
  switch (static_cast<MIDIUMPMessageType>(core::umpMessageType(words.front()))) {
    case MIDIUMPMessageType::data64bit:
      appendSysEx7(list, timeStamp, words);
      break;
    case MIDIUMPMessageType::midi1ChannelVoice:
      appendChannelVoice(list, timeStamp, words.front());
      break;
    case MIDIUMPMessageType::systemRealTimeAndCommon:
    case MIDIUMPMessageType::midi2ChannelVoice:
      appendMessages(list, timeStamp, translator_.toBytes(words));
      break;
    default:  // Bytes have no form for it.
      break;
  }
}

void ListConverter::appendSysEx7(MIDIPacketList& list, std::uint64_t timeStamp,
                                 std::span<const std::uint32_t> words) {
  std::array<std::uint8_t, 8> packet{};
  core::writeUMPBytes(words, packet);
  const auto piece = core::SysEx7Piece::read(packet);
  if (!piece) {
    return;
  }
  auto& buffer = sysEx7_[piece->group];
  if (const auto body = buffer.take(piece->status, piece->bytes, longestSysEx)) {
    std::vector<std::uint8_t> message;
    message.reserve(body->size() + 2);
    message.push_back(core::sysExStatus);
    message.insert(message.end(), body->begin(), body->end());
    message.push_back(core::sysExEndStatus);
    appendPacket(list, timeStamp, message);
    if (piece->status == core::MIDIUMPSysExStatusField::end) {
      buffer.clear();
    }
  }
  if (buffer.empty()) {
    sysEx7_.erase(piece->group);
  }
}

}  // namespace midikit::io::engine

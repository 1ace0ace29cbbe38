#include "MIDIKitIO/platform/engine/ListConversion.hpp"

#include <algorithm>
#include <array>

#include "MIDIKitIO/platform/engine/ProtocolTranslation.hpp"
#include "MIDIKitIO/platform/engine/UmpMessages.hpp"

namespace midikit::io::engine {

namespace {

// Message types and the status of system exclusive pieces (Universal MIDI Packet specification).
constexpr std::uint32_t systemMessage = 0x1;
constexpr std::uint32_t midi1ChannelVoice = 0x2;
constexpr std::uint32_t sysEx7Data = 0x3;
constexpr std::uint32_t midi2ChannelVoice = 0x4;
constexpr std::uint32_t sysExComplete = 0;
constexpr std::uint32_t sysExBegin = 1;
constexpr std::uint32_t sysExContinue = 2;
constexpr std::uint32_t sysExFinish = 3;
constexpr std::size_t sysExPieceLength = 6;

constexpr std::uint8_t sysExStart = 0xF0;
constexpr std::uint8_t sysExEnd = 0xF7;
constexpr std::uint8_t firstRealTime = 0xF8;
constexpr std::uint8_t firstStatus = 0x80;

constexpr std::uint8_t byteOf(std::span<const std::uint32_t> words, std::size_t index) {
  return static_cast<std::uint8_t>(words[index / 4] >> (24 - index % 4 * 8));
}

/// A message other than a system exclusive one, in group 0.
std::uint32_t wordOf(std::span<const std::uint8_t> message) {
  const auto at = [message](std::size_t index) -> std::uint32_t {
    return index < message.size() ? message[index] : 0;
  };
  const auto type = at(0) >= sysExStart ? systemMessage : midi1ChannelVoice;
  return type << 28U | at(0) << 16U | at(1) << 8U | at(2);
}

void appendSysEx7(MIDIEventList& list, std::uint64_t timeStamp, std::span<const std::uint8_t> body) {
  for (std::size_t done = 0; done == 0 || done < body.size(); done += sysExPieceLength) {
    const auto piece = body.subspan(done, std::min(sysExPieceLength, body.size() - done));
    const bool isFirst = done == 0;
    const bool isLast = done + piece.size() == body.size();
    const std::uint32_t status = isFirst && isLast ? sysExComplete
                                 : isFirst         ? sysExBegin
                                 : isLast          ? sysExFinish
                                                   : sysExContinue;
    std::array<std::uint32_t, 2> words = {
        sysEx7Data << 28U | status << 20U | static_cast<std::uint32_t>(piece.size()) << 16U, 0};
    for (std::size_t i = 0; i < piece.size(); ++i) {
      const std::size_t place = i + 2;
      words.at(place / 4) |= std::uint32_t{piece[i]} << (24 - place % 4 * 8);
    }
    appendMessage(list, timeStamp, words);
  }
}

void appendTranslated(MIDIEventList& list, std::uint64_t timeStamp, std::span<const std::uint32_t> message) {
  const auto words = translated(message, list.protocol);
  for (auto rest = std::span(words); !rest.empty(); rest = rest.subspan(wordCountOf(rest.front()))) {
    appendMessage(list, timeStamp, rest.first(wordCountOf(rest.front())));
  }
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
  const auto last = std::find_if(bytes.rbegin(), bytes.rend(),
                                 [](auto byte) { return byte >= firstStatus && byte < firstRealTime; });
  return last != bytes.rend() && *last == sysExStart;
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
    if (message.bytes.front() == sysExStart) {
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

void ListConverter::takeMessage(std::uint64_t timeStamp, std::span<const std::uint32_t> words,
                                std::vector<TimedMessage>& out) {
  switch (messageTypeOf(words.front())) {
    case sysEx7Data:
      takeSysEx7(timeStamp, words, out);
      break;
    case systemMessage:
    case midi1ChannelVoice:
    case midi2ChannelVoice:
      ByteSplitter().split(timeStamp, translatedToBytes(words), out);
      break;
    default:  // Bytes have no form for it.
      break;
  }
}

void ListConverter::takeSysEx7(std::uint64_t timeStamp, std::span<const std::uint32_t> words,
                               std::vector<TimedMessage>& out) {
  const std::uint32_t group = words[0] >> 24U & 0xFU;
  const std::uint32_t status = words[0] >> 20U & 0xFU;
  const std::size_t length = std::min<std::size_t>(words[0] >> 16U & 0xFU, sysExPieceLength);
  if (status == sysExComplete || status == sysExBegin) {
    sysEx7_[group].assign(1, sysExStart);
  }
  const auto begun = sysEx7_.find(group);
  if (begun == sysEx7_.end() || status > sysExFinish) {
    return;
  }
  for (std::size_t i = 0; i < length; ++i) {
    begun->second.push_back(byteOf(words, 2 + i));
  }
  if (status == sysExComplete || status == sysExFinish) {
    begun->second.push_back(sysExEnd);
    out.push_back({timeStamp, std::move(begun->second)});
    sysEx7_.erase(begun);
  } else if (begun->second.size() >= ByteSplitter::longestSysEx) {
    sysEx7_.erase(begun);
  }
}

}  // namespace midikit::io::engine

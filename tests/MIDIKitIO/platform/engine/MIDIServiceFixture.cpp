#include "tests/MIDIKitIO/platform/engine/MIDIServiceFixture.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <utility>

namespace midikit::io::engine {

std::string lineOf(const MIDINotification& message) {
  if (const auto* child = std::get_if<MIDINotification::Child>(&message.payload)) {
    return fmt::format("{} {}/{} {}/{}", message.messageID, child->parent, child->parentType, child->child,
                       child->childType);
  }
  if (const auto* property = std::get_if<MIDINotification::Property>(&message.payload)) {
    return fmt::format("{} {}/{} {}", message.messageID, property->object, property->objectType,
                       property->propertyName);
  }
  return fmt::format("{}", message.messageID);
}

std::string lineOf(const MIDIPacketList& list) {
  std::vector<std::string> packets;
  for (std::size_t i = 0; i < list.packetCount(); ++i) {
    packets.push_back(
        fmt::format("{}: {:02X}", list.packet(i).timeStamp, fmt::join(list.packet(i).bytes, " ")));
  }
  return fmt::format("{}", fmt::join(packets, "; "));
}

std::string lineOf(const MIDIEventList& list) {
  std::vector<std::string> packets;
  for (const auto& packet : list.packets) {
    packets.push_back(
        fmt::format("{}: {:08X}", packet.timeStamp,
                    fmt::join(packet.words.begin(), packet.words.begin() + packet.wordCount, " ")));
  }
  return fmt::format("{}| {}", static_cast<int>(list.protocol), fmt::join(packets, "; "));
}

MIDIPacketList packets(const std::vector<std::pair<std::uint64_t, std::vector<std::uint8_t>>>& packets) {
  MIDIPacketList list(65536);
  for (const auto& [timeStamp, bytes] : packets) {
    EXPECT_TRUE(list.add(timeStamp, bytes));
  }
  return list;
}

MIDIPacketList packet(const std::vector<std::uint8_t>& bytes) {
  return packets({{0, bytes}});
}

MIDIEventList events(MIDIProtocolID protocol, const std::vector<std::vector<std::uint32_t>>& packets) {
  MIDIEventList list{.protocol = protocol};
  for (const auto& words : packets) {
    auto& packet = list.packets.emplace_back();
    for (const auto word : words) {
      packet.words.at(packet.wordCount++) = word;
    }
  }
  return list;
}

MIDIServiceFixture::MIDIServiceFixture() {
  EXPECT_EQ(service.MIDIClientCreateWithBlock(
                "client", client, [this](const auto& message) { reported_.push_back(lineOf(message)); }),
            noErr);
}

std::vector<std::string> MIDIServiceFixture::reported() {
  settle();
  return std::exchange(reported_, {});
}

MIDIReadBlock MIDIServiceFixture::byteReader(const std::string& name) {
  return [this, name](const MIDIPacketList& list, ConnectionToken token) {
    const auto* label = static_cast<const char*>(token);
    read_.push_back(fmt::format("{} {}{}", name, label != nullptr ? label : "", lineOf(list)));
  };
}

MIDIReceiveBlock MIDIServiceFixture::wordReader(const std::string& name) {
  return [this, name](const MIDIEventList& list, ConnectionToken token) {
    const auto* label = static_cast<const char*>(token);
    read_.push_back(fmt::format("{} {}{}", name, label != nullptr ? label : "", lineOf(list)));
  };
}

std::vector<std::string> MIDIServiceFixture::read() {
  settle();
  return std::exchange(read_, {});
}

}  // namespace midikit::io::engine

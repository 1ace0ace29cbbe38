#include "MIDIKitIO/packets/PacketsOfLists.hpp"

#include <string>
#include <string_view>
#include <vector>

#include "MIDIKitIO/packets/ConnectionNumber.hpp"
#include "MIDIKitInternals/RadixText.hpp"
#include "tests/MIDIKitIO/ManagerFixture.hpp"

namespace midikit::io {
namespace {

using Lines = std::vector<std::string>;

Lines linesOf(const AnyMIDIPackets& packets) {
  Lines lines;
  for (const auto& packet : packets) {
    lines.push_back(std::to_string(packet.timeStamp()) + ": " +
                    internals::hexText(packet.bytes(), {.width = 2}));
  }
  return lines;
}

using PacketsOfListsTest = ManagerFixture;

TEST_F(PacketsOfListsTest, WordsAreSplitIntoTheMessagesThatCanBeRead) {
  struct Case {
    std::string what;
    std::vector<std::vector<std::uint32_t>> packets;
    Lines expected;
  };
  const Case cases[] = {
      {"no packets", {}, {}},
      {"one and two words, high bytes first",
       {{0x00200001, 0x10F80000, 0x20903C40, 0x40903C00, 0x80000000}},
       {"0: 00 20 00 01", "0: 10 F8 00 00", "0: 20 90 3C 40", "0: 40 90 3C 00 80 00 00 00"}},
      {"two and four words",
       {{0x30024101, 0, 0x50024101, 1, 2, 3}},
       {"0: 30 02 41 01 00 00 00 00", "0: 50 02 41 01 00 00 00 01 00 00 00 02 00 00 00 03"}},
      {"a message that is cut off ends its packet alone",
       {{0x20903C40, 0x40903C00}, {0x10F80000}},
       {"0: 20 90 3C 40", "1: 10 F8 00 00"}},
      {"so does a type above 5, whatever comes after it",
       {{0x20903C40, 0x60000000, 0x10F80000}, {0xF0000000, 0x10F80000}, {0x10FA0000}},
       {"0: 20 90 3C 40", "2: 10 FA 00 00"}},
  };
  for (const auto& [what, packets, expected] : cases) {
    MIDIEventList list;
    for (const auto& words : packets) {
      auto& packet = list.packets.emplace_back();
      packet.timeStamp = list.packets.size() - 1;
      packet.wordCount = static_cast<std::uint32_t>(words.size());
      std::ranges::copy(words, packet.words.begin());
    }
    EXPECT_EQ(linesOf(packetsOf(list, nullptr, *service)), expected) << what;
  }
  for (const std::int32_t number : {0, 1, 2, 3}) {
    const bool isFirst =
        protocolOf({.protocol = MIDIProtocolID(number)}) == core::MIDIProtocolVersion::midi1_0;
    EXPECT_EQ(isFirst, number == 1) << number;
  }
}

TEST_F(PacketsOfListsTest, BytesAndSourcesAreThoseOfTheMoment) {
  const auto source = addSource("a keyboard with a long name", 5);
  const ConnectionNumber number(source);
  MIDIPacketList list(100);
  ASSERT_TRUE(list.add(1, std::vector<std::uint8_t>(20, 0x7F)) && list.add(2, {}));
  const auto packets = packetsOf(list, number.token(), *service);
  ASSERT_EQ(packets.size(), 2U);
  EXPECT_EQ(packets[0].bytes().size(), 20U);
  EXPECT_EQ(linesOf(packets)[1], "2: ");
  EXPECT_EQ(packets[0].source()->uniqueID, 5);
  EXPECT_EQ(packets[0].source()->displayName, makeOutputEndpoint(*service, source).displayName);
  EXPECT_EQ(packets[0].source(), packets[1].source()) << "what hasn't changed is shared";

  for (const auto* const key : {"displayName", "name"}) {
    ASSERT_EQ(service->MIDIObjectSetStringProperty(source, key, "new"), noErr);
    const auto record = packetsOf(list, number.token(), *service)[0].source();
    EXPECT_EQ(std::string_view(key) == "name" ? record->name : record->displayName, "new") << key;
  }
  EXPECT_EQ(packetsOf(list, nullptr, *service)[0].source(), nullptr);
  removeDeviceOf(source);
  EXPECT_EQ(packetsOf(list, number.token(), *service)[0].source(), nullptr) << "gone";
}

}  // namespace
}  // namespace midikit::io

#include "MIDIKitIO/platform/engine/ListConversion.hpp"

#include "tests/MIDIKitIO/platform/engine/MIDIServiceFixture.hpp"

namespace midikit::io::engine {
namespace {

using testing::ElementsAre;

constexpr auto midi1 = MIDIProtocolID::midi1_0;
constexpr auto midi2 = MIDIProtocolID::midi2_0;

std::vector<std::uint8_t> sysEx(std::size_t bodyLength) {
  std::vector<std::uint8_t> bytes(bodyLength + 2, 0x11);
  bytes.front() = 0xF0;
  bytes.back() = 0xF7;
  return bytes;
}

/// Converts into lists of its own.
struct Converter : ListConverter {
  MIDIEventList toWords(const MIDIList& list, MIDIProtocolID protocol) {
    MIDIEventList room;
    return ListConverter::toWords(viewOf(list), protocol, room);
  }
  MIDIPacketList toBytes(const MIDIList& list) {
    MIDIPacketList room;
    return ListConverter::toBytes(viewOf(list), room);
  }
};

TEST(ListConversionTest, BytesBecomeWordsMessageByMessage) {
  const struct {
    const char* what;
    std::vector<std::uint8_t> bytes;
    const char* asMidi1;
    const char* asMidi2;
  } cases[] = {
      {"a note", {0x93, 0x3C, 0x7F}, "1| 0: 20933C7F", "2| 0: 40933C00 FFFF0000"},
      {"a note that ends by velocity 0", {0x90, 0x3C, 0x00}, "1| 0: 20903C00", "2| 0: 40803C00 00000000"},
      {"a controller", {0xB1, 0x07, 0x40}, "1| 0: 20B10740", "2| 0: 40B10700 80000000"},
      {"pitch bend", {0xE0, 0x00, 0x40}, "1| 0: 20E00040", "2| 0: 40E00000 80000000"},
      {"a program", {0xC5, 0x09}, "1| 0: 20C50900", "2| 0: 40C50000 09000000"},
      {"running status",
       {0xD0, 0x01, 0x02},
       "1| 0: 20D00100 20D00200",
       "2| 0: 40D00000 02000000 40D00000 04000000"},
      {"system messages",
       {0xF1, 0x23, 0xF2, 0x01, 0x02, 0xF6},
       "1| 0: 10F12300 10F20102 10F60000",
       "2| 0: 10F12300 10F20102 10F60000"},
      {"no running status after a system message",
       {0x90, 0x3C, 0x40, 0xF3, 0x05, 0x06, 0x07},
       "1| 0: 20903C40 10F30500",
       "2| 0: 40903C00 80000000 10F30500"},
      {"a clock within a note",
       {0x90, 0x3C, 0xF8, 0x40},
       "1| 0: 10F80000 20903C40",
       "2| 0: 10F80000 40903C00 80000000"},
      {"what is no message", {0x12, 0xF4, 0x13, 0xF9, 0x90, 0x3C}, "1| ", "2| "},
      {"system exclusive without a body", {0xF0, 0xF7}, "1| 0: 30000000 00000000", "2| 0: 30000000 00000000"},
      {"6 bytes", sysEx(6), "1| 0: 30061111 11111111", "2| 0: 30061111 11111111"},
      {"7 bytes", sysEx(7), "1| 0: 30161111 11111111 30311100 00000000",
       "2| 0: 30161111 11111111 30311100 00000000"},
      {"13 bytes", sysEx(13), "1| 0: 30161111 11111111 30261111 11111111 30311100 00000000",
       "2| 0: 30161111 11111111 30261111 11111111 30311100 00000000"},
      {"one that the next message cuts off",
       {0xF0, 0x41, 0x90, 0x3C, 0x40},
       "1| 0: 30014100 00000000 20903C40",
       "2| 0: 30014100 00000000 40903C00 80000000"},
  };
  for (const auto& testCase : cases) {
    Converter converter;
    EXPECT_EQ(lineOf(converter.toWords(packet(testCase.bytes), midi1)), testCase.asMidi1) << testCase.what;
    EXPECT_EQ(lineOf(converter.toWords(packet(testCase.bytes), midi2)), testCase.asMidi2) << testCase.what;
    EXPECT_TRUE(converter.isIdle()) << testCase.what;
  }
}

TEST(ListConversionTest, WordsBecomeBytesMessageByMessage) {
  const struct {
    const char* what;
    MIDIProtocolID protocol;
    std::vector<std::uint32_t> words;
    const char* bytes;
  } cases[] = {
      {"MIDI 1.0", midi1, {0x20933C7F, 0x10F80000}, "0: 93 3C 7F; 0: F8"},
      {"words that are no message beside one that is",
       midi1,
       {0x20933C80, 0x20938040, 0x207F3C40, 0x20F80000, 0x20C50980},
       "0: C5 09"},
      {"a note of MIDI 2.0", midi2, {0x40933C00, 0x80000000}, "0: 93 3C 40"},
      {"one so soft that MIDI 1.0 would hear its end", midi2, {0x40933C00, 0x00010000}, "0: 93 3C 01"},
      {"a program with its bank", midi2, {0x40C00001, 0x09000102}, "0: B0 00 01; 0: B0 20 02; 0: C0 09"},
      {"a registered controller",
       midi2,
       {0x40200001, 0x02000000},
       "0: B0 65 00; 0: B0 64 01; 0: B0 06 01; 0: B0 26 00"},
      {"what MIDI 1.0 hasn't got", midi2, {0x40603C00, 0x80000000, 0x50010000, 0, 0, 0, 0x00201234}, ""},
      {"a type nobody uses", midi2, {0xD0000000, 1, 2, 3, 0x10F80000}, "0: F8"},
      {"a message that is cut off", midi1, {0x10F80000, 0x30161111}, "0: F8"},
      {"system exclusive",
       midi1,
       {0x30161111, 0x11111111, 0x30321122, 0},
       "0: F0 11 11 11 11 11 11 11 22 F7"},
      {"a piece of nothing", midi1, {0x30321122, 0}, ""},
  };
  for (const auto& testCase : cases) {
    Converter converter;
    EXPECT_EQ(lineOf(converter.toBytes(events(testCase.protocol, {testCase.words}))), testCase.bytes)
        << testCase.what;
  }
}

/// The short way of most messages leads where the events do.
TEST(ListConversionTest, AMessageOfMidi2HasTheBytesOfItsEvent) {
  ProtocolTranslator translator;
  core::MIDI2Parser parser;
  for (std::uint32_t head = 0x40800000; head < 0x41000000; head += 0x100) {
    for (const std::uint32_t value : {0U, 0x00010000U, 0x01FFFFFFU, 0x02000000U, 0x8002FFFFU, 0xFFFFFFFFU}) {
      const std::array words{head, value};
      std::vector<std::uint8_t> expected;
      for (const auto& event : parser.parsedEvents(std::span<const std::uint32_t>(words))) {
        event.appendMIDI1Bytes(expected);
      }
      ASSERT_TRUE(std::ranges::equal(translator.toBytes(words), expected))
          << std::hex << head << " " << value;
    }
  }
}

TEST(ListConversionTest, WordsAreTranslatedBetweenTheProtocols) {
  Converter converter;
  EXPECT_EQ(lineOf(converter.toWords(events(midi1, {{0x25933C40, 0x15F80000}}), midi2)),
            "2| 0: 45933C00 80000000 15F80000");
  EXPECT_EQ(lineOf(converter.toWords(events(midi2, {{0x45933C00, 0x80000000}, {0x40603C00, 1}}), midi1)),
            "1| 0: 25933C40")
      << "a bend of one note is unknown to MIDI 1.0";
}

TEST(ListConversionTest, PacketsStayApartAndGiveNoMoreWordsThanTheyHave) {
  Converter converter;
  auto list = events(midi1, {{0x60000000}, {0x10F80000, 0x10FA0000}});
  EXPECT_EQ(lineOf(converter.toWords(list, midi2)), "2| 0: 60000000; 0: 10F80000 10FA0000");
  for (const std::uint32_t wordCount : {100U, 0U}) {  // The second is what lies after the first.
    list.packets.push_back({.wordCount = wordCount});
    list.packets.back().words.fill(0x10F80000);
  }
  EXPECT_EQ(converter.toBytes(list).packetCount(), 2U + 64);
}

TEST(ListConversionTest, WhatHasTheWantedFormStaysAsItIs) {
  Converter converter;
  EXPECT_EQ(lineOf(converter.toWords(events(midi2, {{0x20933C40}, {0x60000000, 1}, {0x30161111}}), midi2)),
            "2| 0: 20933C40; 0: 60000000 00000001; 0: 30161111");
  EXPECT_EQ(lineOf(converter.toBytes(
                packets({{5, {0x12, 0x90, 0x3C}}, {6, {}}, {7, {0xF0, 0x41, 0xF7, 0xF0, 0x42, 0xF7}}}))),
            "5: 12 90 3C; 6: ; 7: F0 41 F7 F0 42 F7");
}

TEST(ListConversionTest, SystemExclusiveMessagesAreCollectedOverListsAndComeWhole) {
  Converter toBytes;
  EXPECT_EQ(lineOf(toBytes.toBytes(packets({{1, {0xFE, 0xF0, 0x41, 0xF8}}}))), "1: FE; 1: F8");
  EXPECT_EQ(lineOf(toBytes.toBytes(packets({{2, {0x42, 0xF8}}}))), "2: F8");
  EXPECT_FALSE(toBytes.isIdle());
  EXPECT_EQ(lineOf(toBytes.toBytes(packets({{3, {0x43, 0xF7, 0x90, 0x3C, 0x40}}}))),
            "3: F0 41 42 43 F7; 3: 90 3C 40");
  EXPECT_TRUE(toBytes.isIdle());

  Converter toWords;
  EXPECT_EQ(lineOf(toWords.toWords(packets({{1, {0xF0, 0x41}}}), midi2)), "2| ");
  EXPECT_EQ(lineOf(toWords.toWords(packets({{2, {0x42, 0xF7}}}), midi2)), "2| 2: 30024142 00000000");

  Converter fromWords;
  EXPECT_EQ(lineOf(fromWords.toBytes(events(midi1, {{0x30161111, 0x11111111, 0x31160202, 0x02020202}}))), "");
  EXPECT_EQ(lineOf(fromWords.toBytes(events(midi1, {{0x10F80000, 0x30317700, 0}, {0x31300000, 0}}))),
            "0: F8; 0: F0 11 11 11 11 11 11 77 F7; 0: F0 02 02 02 02 02 02 F7")
      << "one for each group";
  EXPECT_TRUE(fromWords.isIdle());
}

TEST(ListConversionTest, LongSystemExclusiveMessagesFillPacketsOf64WordsAndHaveALimit) {
  Converter converter;
  MIDIPacketList long1(1000);
  ASSERT_TRUE(long1.add(0, sysEx(32 * 6 + 1)));
  const auto words = converter.toWords(long1, midi1);
  ASSERT_EQ(words.packets.size(), 2U);
  EXPECT_EQ(words.packets[0].wordCount, 64U);
  EXPECT_EQ(words.packets[1].wordCount, 2U);
  EXPECT_EQ(lineOf(converter.toBytes(words)), lineOf(long1));

  const std::vector<std::uint8_t> piece(ByteSplitter::longestSysEx / 4, 0x11);
  static_cast<void>(converter.toBytes(packet({0xF0})));
  for (int i = 0; i < 4; ++i) {
    MIDIPacketList list(piece.size() + 14);
    ASSERT_TRUE(list.add(0, piece));
    EXPECT_FALSE(converter.isIdle());
    EXPECT_EQ(converter.toBytes(list).packetCount(), 0U);
  }
  EXPECT_TRUE(converter.isIdle()) << "dropped";
}

}  // namespace
}  // namespace midikit::io::engine

#include "MIDIKitCore/SysExParser.hpp"

#include <gtest/gtest.h>

#include <numeric>
#include <string>
#include <vector>

#include "MIDIKitCore/MIDI1Parser.hpp"
#include "MIDIKitCore/MIDI2Parser.hpp"
#include "MIDIKitCore/sysex/SysExBytes.hpp"
#include "MIDIKitCore/sysex/SysExIdentity.hpp"
#include "tests/MIDIKitCore/Events.hpp"

namespace midikit::core {
namespace {

using namespace literals;

const SysExResult malformed = ParseError::malformed;
constexpr auto group = 5_u4;
const auto roland = SysExManufacturer::oneByte(0x41_u7);

SysExResult sysEx7(SysExManufacturer manufacturer, const std::string& data) {
  return MIDIEvent(*SysEx7::make(manufacturer, bytesOf(data), group));
}

SysExResult universal7(UniversalSysExType type, const std::string& data) {
  return MIDIEvent(*UniversalSysEx7::make(type, 0x7F_u7, 6_u7, 1_u7, bytesOf(data), group));
}

struct Case {
  std::string bytes;
  SysExResult expected;
};

TEST(SysExParserTest, ReadsWholeMessages) {
  using enum UniversalSysExType;
  const auto zero = SysExManufacturer::threeByte(0_u7, 0_u7);
  const Case cases[] = {
      {"", ParseError::rawBytesEmpty},
      {"F0 41", sysEx7(roland, "")},
      {"F0 41 F7", sysEx7(roland, "")},
      {"F0 41 01 7F", sysEx7(roland, "01 7F")},
      {"F0 41 01 7F F7", sysEx7(roland, "01 7F")},
      {"F0 7D F7", sysEx7(SysExManufacturer::oneByte(0x7D_u7), "")},
      {"F0 00 00 00 F7", sysEx7(zero, "")},
      {"F0 00 00 00 05", sysEx7(zero, "05")},
      {"F0 7E 7F 06 01 F7", universal7(nonRealTime, "")},
      {"F0 7F 7F 06 01 F7", universal7(realTime, "")},
      {"F0 7E 7F 06 01 02", universal7(nonRealTime, "02")},
      {"F0 7E 7F 06 01 02 F7", universal7(nonRealTime, "02")},
  };
  for (const auto& [bytes, expected] : cases) {
    EXPECT_TRUE(parseSysEx7(bytesOf(bytes), group) == expected) << bytes;
  }
  const std::string unreadable =
      "F0 | F0 F7 | 41 F7 | F7 41"                       // no message around anything
      "| F0 41 F7 01 F7 | F0 41 01 F7 F7 | F0 41 F0 F7"  // a status in the body
      "| F0 41 80 F7 | F0 80 F7 | F0 00 80 20 F7"        // more than seven bits
      "| F0 00 | F0 00 20 | F0 00 20 F7"                 // an identifier that isn't whole
      "| F0 7E | F0 7E 7F 06 F7 | F0 7E 7F 06 01"        // a header that isn't whole, or looks so
      "| F0 7E 80 06 01 02 F7 | F0 7E 7F 86 01 02 F7 | F0 7E 7F 06 81 02 F7"
      "| F0 7E 7F 06 01 82 F7 | F0 7E 7F 06 01 80";
  for (const std::string& bytes : partsOf(unreadable)) {
    EXPECT_TRUE(parseSysEx7(bytesOf(bytes), group) == malformed) << bytes;
  }
}

TEST(SysExParserTest, SaysWhyThereIsNoEvent) {
  EXPECT_EQ(description(ParseError::rawBytesEmpty), "Raw bytes empty.");
  EXPECT_EQ(description(ParseError::malformed), "Malformed.");
  EXPECT_EQ(description(ParseError::invalidType), "Invalid type.");
}

TEST(SysExParserTest, ReadsHexadecimalText) {
  const Case cases[] = {
      {"f0 41 01 f7", sysEx7(roland, "01")},
      {"F04101F7", sysEx7(roland, "01")},
      {"\tF\n0 4 1\r\n\v\f0 1 f 7 ", sysEx7(roland, "01")},
      {"F0\u00A041\u200101\u2028\u3000F7\u0085", sysEx7(roland, "01")},
      {"F0\u1680\u2000\u2002\u2003\u2004\u2005\u2006\u2007\u2008\u2009\u200A\u2029\u202F\u205F 41",
       sysEx7(roland, "")},
      {"F0 4a 4F 5B F7", sysEx7(SysExManufacturer::oneByte(0x4A_u7), "4F 5B")},
  };
  for (const auto& [text, expected] : cases) {
    EXPECT_TRUE(parseSysEx7Hex(text, group) == expected) << text;
  }
  for (const std::string bytes :
       {"\tF\n0 4 1\r\n\v\f0 1 fF 7 ", "F0 41 \u200B01 F7", "F0 41 1x F7", "F0410", "", " \n", "F0 41 G1 F7",
        "F0 41 +1 F7", "F0 41 -1 F7", "F0 0x F7", "F0,41,01,F7", "F0 41 \u00C4 F7"}) {
    EXPECT_TRUE(parseSysEx7Hex(bytes, group) == malformed) << bytes;
  }
}

TEST(SysExParserTest, ReadsEightBitMessages) {
  const auto sysEx8 = [](SysExManufacturer manufacturer, const std::string& data) -> SysExResult {
    return MIDIEvent(SysEx8(manufacturer, SysExData(bytesOf(data)), 5, group));
  };
  const auto universal = [](const std::string& data) -> SysExResult {
    return MIDIEvent(UniversalSysEx8(UniversalSysExType::realTime, 0x7F_u7, 6_u7, 1_u7,
                                     SysExData(bytesOf(data)), 5, group));
  };
  const Case cases[] = {
      {"", ParseError::rawBytesEmpty},
      {"05 00 41", sysEx8(roland, "")},
      {"05 00 41 F7 80 F0 FF", sysEx8(roland, "F7 80 F0 FF")},
      {"05 A1 09 01", sysEx8(SysExManufacturer::threeByte(0x21_u7, 9_u7), "01")},
      {"05 00 7F 7F 06 01", universal("")},
      {"05 00 7F 7F 06 01 FF", universal("FF")},
  };
  for (const auto& [bytes, expected] : cases) {
    EXPECT_TRUE(parseSysEx8(bytesOf(bytes), group) == expected) << bytes;
  }
  for (const std::string bytes :
       {"05", "05 00", "05 00 00", "05 01 41 01", "05 01 7E 7F 06 01", "05 7F 7F 7F 06 01", "05 80 80 01",
        "05 00 7F", "05 00 7F 7F 06", "05 00 7F 7F 06 81"}) {
    EXPECT_TRUE(parseSysEx8(bytesOf(bytes), group) == malformed) << bytes;
  }
}

TEST(SysExParserTest, RecordsOf7BitDataRefuseAnyOtherByte) {
  const auto universal = UniversalSysExType::realTime;
  for (int byte = 0; byte <= 0xFF; ++byte) {
    const Bytes data{1, static_cast<std::uint8_t>(byte), 2};
    const auto one = MIDIEvent::sysEx7(roland, data);
    const auto other = MIDIEvent::universalSysEx7(universal, 0_u7, 0_u7, 0_u7, data);
    for (const SysExResult& made : {one, other}) {
      ASSERT_EQ(made.hasValue(), byte < 0x80);
      ASSERT_TRUE(made.hasValue() || made.error() == malformed);
    }
  }
}

TEST(SysExParserTest, FramingIsOptional) {
  const auto event = *SysEx7::make(SysExManufacturer::threeByte(1_u7, 2_u7), bytesOf("03 04"));
  EXPECT_EQ(sysEx7Bytes(event), bytesOf("F0 00 01 02 03 04 F7"));
  EXPECT_EQ(sysEx7Bytes(event, {.leading = false}), bytesOf("00 01 02 03 04 F7"));
  EXPECT_EQ(sysEx7Bytes(event, {.leading = false, .trailing = false}), bytesOf("00 01 02 03 04"));
  EXPECT_EQ(sysEx7Bytes(identityRequest(0x10_u7), {.trailing = false}), bytesOf("F0 7E 10 06 01"));
}

TEST(SysExParserTest, AListOfMessagesSeldomMoves) {
  const MIDIEvent event = *SysEx7::make(roland, bytesOf("01 02"));
  Bytes list;
  std::size_t moves = 0;
  for (int count = 1; count <= 1000; ++count) {
    const std::size_t before = list.capacity();
    event.appendMIDI1Bytes(list);
    moves += list.capacity() != before ? 1U : 0U;
    ASSERT_EQ(list.size(), 5U * static_cast<std::size_t>(count));
  }
  EXPECT_LT(moves, 30U);
}

TEST(SysExParserTest, IdentityMessagesAreThoseOfTheStandard) {
  EXPECT_EQ(sysEx7Bytes(identityRequest(0x7F_u7)), bytesOf("F0 7E 7F 06 01 F7"));
  const DeviceIdentity identity{.manufacturer = SysExManufacturer::threeByte(0x21_u7, 9_u7),
                                .family = 0x1234_u14,
                                .model = 0x3F01_u14,
                                .revision = {1_u7, 2_u7, 3_u7, 4_u7}};
  EXPECT_EQ(sysEx7Bytes(identityReply(0x10_u7, identity)),
            bytesOf("F0 7E 10 06 02 00 21 09 34 24 01 7E 01 02 03 04 F7"));
}

/// The four records with a body of that length; 8-bit ones have bytes of all values.
Events eventsWithBody(std::size_t length) {
  const auto data7 = sevenBitBytes(length, 3);
  Bytes data8(length);
  for (std::size_t i = 0; i < length; ++i) {
    data8[i] = static_cast<std::uint8_t>(i * 7);
  }
  using enum UniversalSysExType;
  const auto threeByte = SysExManufacturer::threeByte(0x7F_u7, 0_u7);
  Events events{*SysEx7::make(roland, data7, group), *SysEx7::make(threeByte, data7, group),
                *UniversalSysEx7::make(nonRealTime, 1_u7, 2_u7, 3_u7, data7, group)};
  events.emplace_back(SysEx8(roland, SysExData(data8), 0xFF, group));
  events.emplace_back(SysEx8(threeByte, SysExData(data8), 0, group));
  events.emplace_back(UniversalSysEx8(realTime, 1_u7, 2_u7, 3_u7, SysExData(data8), 7, group));
  return events;
}

TEST(SysExRoundTripTest, BytesAndPacketsComeBackAsTheSameEvent) {
  std::vector<std::size_t> lengths(101);
  std::iota(lengths.begin(), lengths.end(), 0);
  lengths.push_back((1 << 20) - 16);
  for (const std::size_t length : lengths) {
    for (const auto& event : eventsWithBody(length)) {
      if (const auto bytes = event.midi1Bytes(); !bytes.empty()) {
        ASSERT_TRUE(*parseSysEx7(bytes, group) == event) << length;
        // An identifier, a device ID and two sub-IDs are no message to a byte stream, which reads it without
        // its 0xF7.
        const bool isHeaderAlone = length == 0 && event.is<UniversalSysEx7>();
        const auto parsed = MIDI1Parser().parsedEvents(bytes, group);
        ASSERT_TRUE(parsed == (isHeaderAlone ? Events{} : Events{event})) << length;
      }
      MIDI2Parser parser;
      Events events;
      for (const auto& packet : event.umpWords(MIDIProtocolVersion::midi2_0)) {
        ASSERT_TRUE(events.empty()) << "before the last packet";
        parser.parse(packet.words(), events);
      }
      ASSERT_TRUE(events == Events{event}) << length;
    }
  }
}

TEST(SysExPacketsTest, AreCutAsTheStandardSays) {
  const auto event7 = [](std::size_t payload) {
    return *MIDIEvent::sysEx7(roland, sevenBitBytes(payload - 1, 1), 2_u4);
  };
  const auto event8 = [](std::size_t payload) {
    return MIDIEvent(SysEx8(roland, SysExData(Bytes(payload - 2, 0xEE)), 5, 2_u4));
  };
  const struct {
    MIDIEvent event;
    std::string packets;
  } cases[] = {
      {event7(1), "32014100 0"},
      {event7(6), "32064101 060B1015"},
      {event7(7), "32164101 060B1015 | 32311A00 0"},
      {event7(12), "32164101 060B1015 | 32361A1F 24292E33"},
      {event7(13), "32164101 060B1015 | 32261A1F 24292E33 | 32313800 0"},
      {event8(2), "52030500 41000000 0 0"},
      {event8(13), "520E0500 41EEEEEE EEEEEEEE EEEEEEEE"},
      {event8(14), "521E0500 41EEEEEE EEEEEEEE EEEEEEEE | 523205EE 0 0 0"},
      {event8(27),
       "521E0500 41EEEEEE EEEEEEEE EEEEEEEE | 522E05EE EEEEEEEE EEEEEEEE EEEEEEEE | 523205EE 0 0 0"},
  };
  for (const auto& [event, text] : cases) {
    std::vector<UMPPacket> packets;
    for (const auto& packet : partsOf(text)) {
      packets.emplace_back(bytesOf<std::uint32_t>(packet));
    }
    EXPECT_EQ(event.umpWords(MIDIProtocolVersion::midi2_0), packets) << text;
  }
}

}  // namespace
}  // namespace midikit::core

#include "MIDIKitCore/MIDI2Parser.hpp"

#include <gtest/gtest.h>

#include <array>
#include <random>
#include <span>
#include <string>

#include "MIDIKitCore/SysExParser.hpp"
#include "MIDIKitCore/detail/SysExBuffer.hpp"
#include "MIDIKitCore/wire/UMPWords.hpp"
#include "tests/MIDIKitCore/Events.hpp"

namespace midikit::core {
namespace {

using namespace literals;

constexpr auto vel = Velocity::midi1;
constexpr auto val = Amount::midi1;
constexpr auto v16 = Velocity::midi2;
constexpr auto v32 = Amount::midi2;
constexpr auto note32 = NoteValue::midi2;
constexpr std::uint16_t time = 0x1234;

/// A packet and its events.
struct Case {
  std::string packet;
  Events events;
};

/// Of packets that come one after the other, given as bytes and as words.
void expectStream(std::span<const Case> cases) {
  MIDI2Parser ofBytes;
  MIDI2Parser ofWords;
  for (const auto& [packet, expected] : cases) {
    const auto bytes = bytesOf(packet);
    expectEvents(ofBytes.parsedEvents(bytes), expected, packet);
    std::vector<std::uint32_t> words;
    for (std::size_t i = 0; i + 4 <= bytes.size(); i += 4) {
      words.push_back(umpWord(bytes[i], bytes[i + 1], bytes[i + 2], bytes[i + 3]));
    }
    if (words.size() * 4 == bytes.size()) {
      expectEvents(ofWords.parsedEvents(words), expected, packet + " in words");
    }
  }
}

TEST(MIDI2ParserTest, ReadsUtilityAndSystemMessages) {
  const auto noteOn = MIDIEvent::noteOn(0x3C_u7, vel(0x40_u7), 1_u4, 2_u4);
  const auto timestamp = MIDIEvent::jrTimestamp(time, 3_u4);
  const Case cases[] = {
      {"03 00 12 34", {MIDIEvent::noOp(3_u4)}},
      {"03 1F 12 34", {MIDIEvent::jrClock(time, 3_u4)}},
      {"03 20 12 34", {timestamp}},
      {"03 20 12 34 22 91 3C 40", {timestamp, noteOn}},
      {"03 20 12 34 03 20 12 34 22 91 3C 40", {timestamp, timestamp, noteOn}},
      {"03 20 12 34 22 91 3C 40 22 91 3C 40", {timestamp}},
      {"03 20 12 34 03 20 12 34 03 20 12 34 03 20 12 34 22 91 3C 40",
       {timestamp, timestamp, timestamp, timestamp, noteOn}},
      {"03 10 12 34 22 91 3C 40", {MIDIEvent::jrClock(time, 3_u4)}},
      {"11 F1 7F 80", {MIDIEvent::timecodeQuarterFrame(0x7F_u7, 1_u4)}},
      {"11 F2 7F 01", {MIDIEvent::songPositionPointer(255_u14, 1_u4)}},
      {"11 F3 05 FF", {MIDIEvent::songSelect(5_u7, 1_u4)}},
      {"11 F6 FF FF", {MIDIEvent::tuneRequest(1_u4)}},
  };
  expectStream(cases);
  for (int status = 0xF4; status <= 0xFF; ++status) {
    const auto events =
        MIDI2Parser().parsedEvents(Bytes{0x10, static_cast<std::uint8_t>(status), 0xFF, 0xFF});
    const bool isKnown = status == 0xF6 || (status >= 0xF8 && status != 0xF9 && status != 0xFD);
    ASSERT_EQ(events.size(), isKnown ? 1U : 0U) << status;
    ASSERT_TRUE(events.empty() || events[0].midi1Bytes() == Bytes{static_cast<std::uint8_t>(status)});
  }
}

TEST(MIDI2ParserTest, ReadsMIDI1ChannelVoiceMessages) {
  const Case cases[] = {
      {"22 81 3C 40", {MIDIEvent::noteOff(0x3C_u7, vel(0x40_u7), 1_u4, 2_u4)}},
      {"22 91 3C 00", {MIDIEvent::noteOn(0x3C_u7, vel(0_u7), 1_u4, 2_u4)}},
      {"22 A1 3C 40", {MIDIEvent::notePressure(0x3C_u7, val(0x40_u7), 1_u4, 2_u4)}},
      {"22 B1 07 40", {MIDIEvent::cc(Controller::volume, val(0x40_u7), 1_u4, 2_u4)}},
      {"22 C1 07 FF", {MIDIEvent::programChange(7_u7, 1_u4, 2_u4)}},
      {"22 D1 07 FF", {MIDIEvent::pressure(val(7_u7), 1_u4, 2_u4)}},
      {"22 E1 00 40", {MIDIEvent::pitchBend(Bend::midi1(0x2000_u14), 1_u4, 2_u4)}},
  };
  expectStream(cases);
  for (int status = 0; status <= 0xFF; ++status) {
    const auto events = MIDI2Parser().parsedEvents(Bytes{0x22, static_cast<std::uint8_t>(status), 1, 2});
    ASSERT_EQ(events.size(), status >= 0x80 && status < 0xF0 ? 1U : 0U) << status;
  }
}

TEST(MIDI2ParserTest, ReadsMIDI2ChannelVoiceMessages) {
  using enum MIDI2ParameterNumberChange;
  const auto registered = PerNoteController::registered(PerNoteController::Registered::volume);
  const auto attribute = NoteAttribute::pitch7_9({.coarse = 60_u7, .fine = 0_u9});
  const auto bend = RegisteredController::pitchBendSensitivity(2_u7, 5_u7);
  const auto raw = AssignableController::raw({.msb = 1_u7, .lsb = 2_u7}, 0x7F_u7, 0x7F_u7);
  const Case cases[] = {
      {"43 02 3C 07 12 34 56 78", {MIDIEvent::noteCC(0x3C_u7, registered, note32(0x12345678), 2_u4, 3_u4)}},
      {"43 12 3C FF 12 34 56 78",
       {MIDIEvent::noteCC(0x3C_u7, PerNoteController::assignable(255), note32(0x12345678), 2_u4, 3_u4)}},
      {"43 22 00 00 04 14 00 00", {MIDIEvent::rpn(bend, absolute, 2_u4, 3_u4)}},
      {"43 42 00 00 04 17 FF FF", {MIDIEvent::rpn(bend, relative, 2_u4, 3_u4)}},
      {"43 32 01 02 FF FF FF FF", {MIDIEvent::nrpn(raw, absolute, 2_u4, 3_u4)}},
      {"43 52 01 02 FF FF FF FF", {MIDIEvent::nrpn(raw, relative, 2_u4, 3_u4)}},
      {"43 32 7F 7F FF FF FF FF", {MIDIEvent::nrpn(AssignableController::null(), absolute, 2_u4, 3_u4)}},
      {"43 62 3C FF 12 34 56 78", {MIDIEvent::notePitchBend(0x3C_u7, note32(0x12345678), 2_u4, 3_u4)}},
      {"43 82 3C 00 80 00 12 34", {MIDIEvent::noteOff(0x3C_u7, v16(0x8000), 2_u4, 3_u4)}},
      {"40 90 3C 03 80 00 78 00", {MIDIEvent::noteOn(0x3C_u7, v16(0x8000), attribute, 0_u4)}},
      {"40 90 3C 01 00 00 78 01",
       {MIDIEvent::noteOn(0x3C_u7, v16(0), NoteAttribute::manufacturerSpecific(0x7801), 0_u4)}},
      {"40 90 3C 02 00 01 78 01",
       {MIDIEvent::noteOn(0x3C_u7, v16(1), NoteAttribute::profileSpecific(0x7801), 0_u4)}},
      {"40 80 3C 04 00 01 78 01",
       {MIDIEvent::noteOff(0x3C_u7, v16(1), NoteAttribute::undefined(4, 0x7801), 0_u4)}},
      {"43 A2 3C FF 12 34 56 78", {MIDIEvent::notePressure(0x3C_u7, v32(0x12345678), 2_u4, 3_u4)}},
      {"43 B2 07 FF 12 34 56 78", {MIDIEvent::cc(Controller::volume, v32(0x12345678), 2_u4, 3_u4)}},
      {"43 C2 FF 00 05 FF 01 02", {MIDIEvent::programChange(5_u7, 2_u4, 3_u4)}},
      {"43 C2 00 FF 05 00 01 02", {MIDIEvent::programChange(5_u7, Bank::bankSelect(130_u14), 2_u4, 3_u4)}},
      {"43 C2 00 FE 05 00 01 02", {MIDIEvent::programChange(5_u7, 2_u4, 3_u4)}},
      {"43 C2 00 01 05 00 01 02", {MIDIEvent::programChange(5_u7, Bank::bankSelect(130_u14), 2_u4, 3_u4)}},
      {"43 D2 FF FF 12 34 56 78", {MIDIEvent::pressure(v32(0x12345678), 2_u4, 3_u4)}},
      {"43 E2 FF FF 12 34 56 78", {MIDIEvent::pitchBend(Bend::midi2(0x12345678), 2_u4, 3_u4)}},
      {"43 F2 3C 01 00 00 00 00",
       {MIDIEvent::noteManagement(0x3C_u7, OptionFlag::resetPerNoteControllers, 2_u4, 3_u4)}},
      {"43 F2 3C FE 00 00 00 00",
       {MIDIEvent::noteManagement(0x3C_u7, OptionFlag::detachPerNoteControllers, 2_u4, 3_u4)}},
  };
  expectStream(cases);
}

TEST(MIDI2ParserTest, APacketThatItCannotReadGivesNothing) {
  const std::string packets =
      // Not of the length that the message type has.
      "| 03 20 12 | 03 20 12 34 00 | 10 F8 00 00 00 | 11 F6 00 00 00 00 00 00 | 22 91 3C 40 00 00 00 00"
      "| 22 91 3C 40 03 20 12 34 03 20 12 34 03 20 12 34 03 20 12 34"
      "| 12 20 12 34 03 20 12 34 03 20 12 34 03 20 12 34 22 91 3C 40"
      "| 43 92 3C 00 | 43 92 3C 00 80 00 00 00 00 00 00 00"
      // No such message type, status or opcode.
      "| 60 00 00 00 | F0 00 00 00 | 03 30 12 34 | 11 90 3C 40 | 11 F0 41 00 | 43 72 3C 00 12 34 56 78"
      // A data byte of eight bits in a MIDI 1.0 message.
      "| 11 F1 80 00 | 11 F2 80 01 | 11 F2 01 80 | 11 F3 85 00"
      "| 22 91 BC 40 | 22 91 3C C0 | 22 C1 87 00 | 22 E1 80 40 | 22 E1 00 C0"
      // The same of a note, a parameter, a controller, a program or a bank, even if the bank isn't selected.
      "| 40 90 80 00 80 00 00 00 | 43 22 80 00 00 00 00 00 | 43 52 00 80 00 00 00 00"
      "| 43 B2 87 00 12 34 56 78 | 43 C2 00 00 85 00 01 02 | 43 C2 00 00 05 00 80 00"
      "| 43 C2 00 00 05 00 00 80";
  for (const std::string& packet : partsOf(packets)) {
    expectStream(std::array{Case{packet, {}}});
  }
}

TEST(MIDI2ParserTest, AnIndexOfEightBitsIsRefusedWhereThereIsOne) {
  for (int opcode = 0; opcode <= 0xF; ++opcode) {
    const auto first = static_cast<std::uint8_t>(opcode << 4);
    const auto events = MIDI2Parser().parsedEvents(Bytes{0x40, first, 0x80, 0, 0, 0, 0, 0});
    // Of a program, the pressure of a channel and its bend the byte is reserved.
    const bool hasNone = opcode == 0xC || opcode == 0xD || opcode == 0xE;
    EXPECT_EQ(events.size(), hasNone ? 1U : 0U) << opcode;
  }
}

TEST(MIDI2ParserTest, EventsComeBackFromTheirPackets) {
  std::mt19937 random(7);
  MIDI2Parser parser;
  int eventCount = 0;
  for (int first = 0; first <= 0x4F; ++first) {
    for (int second = 0; second <= 0xFF; ++second) {
      for (int round = 0; round < 8; ++round) {
        Bytes packet{static_cast<std::uint8_t>(first), static_cast<std::uint8_t>(second)};
        while (packet.size() < (first >> 4 >= 3 ? 8U : 4U)) {
          packet.push_back(static_cast<std::uint8_t>(random() % (round % 2 == 0 ? 0x80 : 0x100)));
        }
        for (const auto& event : parser.parsedEvents(packet)) {
          ++eventCount;
          ASSERT_EQ(event.group().value(), first & 0xF);
          const auto words =
              event.umpWords(first >> 4 == 2 ? MIDIProtocolVersion::midi1_0 : MIDIProtocolVersion::midi2_0);
          ASSERT_EQ(words.size(), 1U);
          ASSERT_EQ(parser.parsedEvents(umpBytes(words[0].words())), Events{event})
              << testing::PrintToString(packet);
        }
      }
    }
  }
  EXPECT_GT(eventCount, 30'000);
}

TEST(MIDI2ParserTest, PutsSevenBitSysExTogether) {
  const auto seven = [](const std::string& body, UInt4 group) {
    return *parseSysEx7(bytesOf("F0 " + body + " F7"), group);
  };
  const Case steps[] = {
      {"30 26 41 01 02 03 04 05", {}},  // continue without a start
      {"30 31 41 00 00 00 00 00", {}},  // end without a start
      {"35 06 41 01 02 03 04 05", {seven("41 01 02 03 04 05", 5_u4)}},
      {"35 02 41 01 FF FF FF FF", {seven("41 01", 5_u4)}},
      {"35 00 00 00 00 00 00 00", {}},
      {"35 07 41 01 02 03 04 05", {}},
      {"35 02 41 80 00 00 00 00", {}},
      {"35 04 7E 7F 06 01 00 00", {seven("7E 7F 06 01", 5_u4)}},
      {"30 16 41 01 02 03 04 05", {}},
      {"30 27 41 01 02 03 04 05", {}},              // refused, and the buffer stays
      {"30 46 41 01 02 03 04 05", {}},              // no such status
      {"30 12 41 01 02 03 04 05 00 00 00 00", {}},  // not the length of a packet
      {"30 12 41 01", {}},
      {"35 01 42 00 00 00 00 00", {seven("42", 5_u4)}},  // complete in between
      {"31 26 06 07 08 09 0A 0B", {}},
      {"32 32 0C 0D 00 00 00 00", {seven("41 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D", 2_u4)}},
      {"30 32 0C 0D 00 00 00 00", {}},  // the buffer is empty again
      {"30 16 41 01 02 03 04 05", {}},
      {"31 16 42 01 02 03 04 05", {}},  // a new start
      {"31 30 00 00 00 00 00 00", {seven("42 01 02 03 04 05", 1_u4)}},
      {"30 10 00 00 00 00 00 00", {}},  // a start with nothing is none
      {"30 31 41 00 00 00 00 00", {}},
      {"30 12 41 90 00 00 00 00", {}},  // not 7-bit: dropped at the end
      {"30 31 01 00 00 00 00 00", {}},
  };
  expectStream(steps);
}

TEST(MIDI2ParserTest, PutsEightBitSysExOfEachStreamTogether) {
  const auto eight = [](const std::string& body, UInt4 group) { return *parseSysEx8(bytesOf(body), group); };
  const std::string zeros = " 00 00 00 00 00 00 00 00 00 00";
  const Case steps[] = {
      {"50 22 05 01 00 00" + zeros, {}},
      {"50 32 05 01 00 00" + zeros, {}},
      {"51 04 05 00 41 FF" + zeros, {eight("05 00 41 FF", 1_u4)}},
      {"51 00 05 00 41 FF" + zeros, {}},
      {"51 0F 05 00 41 FF" + zeros, {}},
      {"51 02 05 00 41 FF" + zeros, {}},
      {"51 0E 05 00 41 01 02 03 04 05 06 07 08 09 0A 0B",
       {eight("05 00 41 01 02 03 04 05 06 07 08 09 0A 0B", 1_u4)}},
      {"50 14 05 00 41 01" + zeros, {}},
      {"50 84 05 00 41 01" + zeros, {}},  // mixed data set
      {"50 94 05 00 41 01" + zeros, {}},
      {"50 44 05 00 41 01" + zeros, {}},
      {"50 14 06 A1 09 02" + zeros, {}},
      {"50 22 05 03 00 00" + zeros, {}},
      {"50 31 06 00 00 00" + zeros, {eight("06 A1 09 02", 0_u4)}},
      {"50 32 06 00 00 00" + zeros, {}},
      {"5F 32 05 04 00 00" + zeros, {eight("05 00 41 01 03 04", 15_u4)}},
      {"50 14 05 00 41 01" + zeros, {}},
      {"50 11 05 00 00 00" + zeros, {}},  // a new start, of nothing but the stream ID
      {"50 33 05 00 42 00" + zeros, {eight("05 00 42", 0_u4)}},
      {"50 14 05 00 41 01" + zeros, {}},
      {"50 14 05 00 42 02", {}},  // not the length of a packet
      {"50 14 05 00 42 02" + zeros + " 00 00 00 00", {}},
      {"50 14 85 00 43 03" + zeros, {}},
      {"50 10 05 00 42 02" + zeros, {}},  // of no bytes at all, the stream ID included
      {"50 20 05 00 42 02" + zeros, {}},
      {"50 30 05 00 42 02" + zeros, {}},
      {"50 32 05 02 00 00" + zeros, {eight("05 00 41 01 02", 0_u4)}},
      {"50 25 05 05 00 41 01 00 00 00 00 00 00 00 00 00",
       {}},  // nothing to continue, though it would be a message
      {"50 32 05 02 00 00" + zeros, {}},
      {"50 31 85 00 00 00" + zeros, {eight("85 00 43 03", 0_u4)}},
  };
  expectStream(steps);
}

TEST(SysExBufferTest, GivesBackTheMemoryOfALongMessageOnly) {
  constexpr std::size_t kept = SysExBuffer::keptCapacity;
  const Bytes longest(100 * kept);
  const std::span bytes(longest);
  for (const std::size_t length : {std::size_t{1}, kept, kept + 1, longest.size()}) {
    for (const bool isTooLong : {false, true}) {
      SysExBuffer buffer;
      buffer.append(bytes.first(length), length);
      const auto capacity = buffer.capacity();
      isTooLong ? buffer.append(bytes.first(1), length) : buffer.clear();
      EXPECT_TRUE(buffer.empty());
      EXPECT_EQ(buffer.capacity(), length > kept ? 0 : capacity) << length;
    }
  }
}

TEST(MIDI2ParserTest, AMessageBeyondTheLimitIsDroppedWhole) {
  for (std::size_t length = 1; length <= 60; ++length) {
    const Events messages{*SysEx7::make(SysExManufacturer::oneByte(0x41_u7), sevenBitBytes(length)),
                          SysEx8(SysExManufacturer::oneByte(0x41_u7), SysExData(Bytes(length, 0xFE)), 9)};
    for (const auto& message : messages) {
      constexpr std::size_t limit = 33;
      MIDI2Parser parser(limit);
      const auto words = message.umpWords(MIDIProtocolVersion::midi2_0);
      Events events;
      for (int round = 0; round < 2; ++round) {
        for (const auto& packet : words) {
          parser.parse(umpBytes(packet.words()), events);
        }
        parser.parse(bytesOf("10 F8 00 00"), events);
      }
      // The identifier counts, and so does the stream ID.
      const bool fits = length + (message.is<SysEx7>() ? 1 : 3) <= limit;
      ASSERT_EQ(events.size(), fits ? 4U : 2U) << length;
      ASSERT_EQ(events.front() == message, fits);
    }
  }
}

}  // namespace
}  // namespace midikit::core

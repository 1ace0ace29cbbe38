#include "MIDIKitCore/MIDI1Parser.hpp"

#include <gtest/gtest.h>

#include <array>
#include <random>
#include <string>

#include "MIDIKitCore/SysExParser.hpp"
#include "tests/MIDIKitCore/Events.hpp"
#include "tests/MIDIKitCore/PlainMIDI1Parser.hpp"

namespace midikit::core {
namespace {

using namespace literals;

constexpr auto vel(UInt7 value) {
  return ChanVoice7Bit16BitValue::midi1(value);
}
constexpr auto val(UInt7 value) {
  return ChanVoice7Bit32BitValue::midi1(value);
}

const MIDIEvent clock = MIDIEvent::timingClock();
const MIDIEvent noteOn = MIDIEvent::noteOn(0x3C_u7, vel(0x40_u7), 0_u4);
const MIDIEvent noteOn2 = MIDIEvent::noteOn(0x3E_u7, vel(0x40_u7), 0_u4);

MIDIEvent sysEx(const std::string& message) {
  return *parseSysEx7Hex(message);
}

TEST(MIDI1ParserTest, ReadsStreams) {
  const auto reset = MIDIEvent::systemReset();
  const auto program = [](UInt7 number) { return MIDIEvent::programChange(number, 0_u4); };
  // Packets of one stream, separated by "|".
  const struct {
    std::string packets;
    Events events;
  } cases[] = {
      {"", {}},
      {"90 3C 40", {noteOn}},
      {"90 3C 40 3E 40", {noteOn, noteOn2}},
      {"90 3C 40 3E 40 | 40 40", {noteOn, noteOn2, MIDIEvent::noteOn(0x40_u7, vel(0x40_u7), 0_u4)}},
      {"90 3C F8 40", {clock, noteOn}},
      {"90 F8 3C F8 40 F8 3E F9 FD 40", {clock, clock, noteOn, clock, noteOn2}},
      {"90 FF 3C FF 40 FF 3E 40", {reset, reset, noteOn, reset, noteOn2}},
      {"90 3C | 40 | 3C 40", {noteOn}},
      {"90 3C 90 3C 40", {noteOn}},
      {"90 3C F4 40 3C 40", {}},
      {"90 3C 40 F4 3C 40", {noteOn}},
      {"90 3C 40 F5 3C 40", {noteOn}},
      {"90 3C 40 F7 3C 40", {noteOn}},
      {"41 10", {}},
      {"C0 01 02", {program(1_u7), program(2_u7)}},
      {"C0 01 | 02 F8 03", {program(1_u7), program(2_u7), clock, program(3_u7)}},
      {"D3 01 02", {MIDIEvent::pressure(val(1_u7), 3_u4), MIDIEvent::pressure(val(2_u7), 3_u4)}},
      {"E0 00 40", {MIDIEvent::pitchBend(ChanVoice14Bit32BitValue::midi1(0x2000_u14), 0_u4)}},
      {"E1 7F 00", {MIDIEvent::pitchBend(ChanVoice14Bit32BitValue::midi1(127_u14), 1_u4)}},
      {"8F 3C 40", {MIDIEvent::noteOff(0x3C_u7, vel(0x40_u7), 15_u4)}},
      {"A1 3C 40", {MIDIEvent::notePressure(0x3C_u7, val(0x40_u7), 1_u4)}},
      {"B2 07 7F", {MIDIEvent::cc(Controller::volume, val(127_u7), 2_u4)}},
      {"F1 35 36", {MIDIEvent::timecodeQuarterFrame(0x35_u7)}},
      {"F2 00 01 | 05 06", {MIDIEvent::songPositionPointer(128_u14)}},
      {"F2 00 F8 01 05 06 07", {clock, MIDIEvent::songPositionPointer(128_u14)}},
      {"F2 00 F3 02", {MIDIEvent::songSelect(2_u7)}},
      {"90 F3 02 3C 40", {MIDIEvent::songSelect(2_u7)}},
      {"F6", {MIDIEvent::tuneRequest()}},
      {"F6 F8 01 F6 F7", {clock, MIDIEvent::tuneRequest(), MIDIEvent::tuneRequest()}},
      {"F8 F9 FA FB FC FD FE FF",
       {clock, MIDIEvent::start(), MIDIEvent::continue_(), MIDIEvent::stop(), MIDIEvent::activeSensing(),
        reset}},
      {"F0 41 10 F7", {sysEx("F0 41 10 F7")}},
      {"F0 41 01 F8 02 F7", {clock, sysEx("F0 41 01 02 F7")}},
      {"F0 F8 41 F9 FE 01 F8 F7", {clock, MIDIEvent::activeSensing(), clock, sysEx("F0 41 01 F7")}},
      {"F0 41 10 | 11 F7", {sysEx("F0 41 10")}},
      {"F0 41 10 90 3C 40", {sysEx("F0 41 10"), noteOn}},
      {"F0 41 10 F0 42 F7", {sysEx("F0 41 10"), sysEx("F0 42")}},
      {"F0 41 10 F6", {sysEx("F0 41 10"), MIDIEvent::tuneRequest()}},
      {"90 3C 40 F0 41 F7 3C 40", {noteOn, sysEx("F0 41")}},
      {"F0 F7 F0 00 20 F7 90 3C 40", {noteOn}},
      {"F0 7E 7F 06 01 F7", {}},
      {"F0 7E 7F 06 02 41 F7", {sysEx("F0 7E 7F 06 02 41 F7")}},
  };
  for (const auto& [packets, expected] : cases) {
    MIDI1Parser parser;
    Events events;
    for (std::size_t from = 0; from <= packets.size();) {
      const auto end = std::min(packets.find('|', from), packets.size());
      parser.parse(bytesOf(packets.substr(from, end - from)), 0_u4, events);
      from = end + 1;
    }
    EXPECT_EQ(events, expected) << packets;
  }
}

TEST(MIDI1ParserTest, ANoteOnWithoutVelocityIsANoteOffUnlessTheOwnerWantsItOtherwise) {
  const auto bytes = bytesOf("95 3C 00 3C 01");
  MIDI1Parser parser;
  EXPECT_EQ(parser.parsedEvents(bytes, 2_u4), (Events{MIDIEvent::noteOff(0x3C_u7, vel(0_u7), 5_u4, 2_u4),
                                                      MIDIEvent::noteOn(0x3C_u7, vel(1_u7), 5_u4, 2_u4)}));
  parser.translateNoteOnZeroVelocityToNoteOff = false;
  const auto events = parser.parsedEvents(bytes, 2_u4);
  ASSERT_EQ(events.size(), 2U);
  EXPECT_EQ(events[0], MIDIEvent::noteOn(0x3C_u7, vel(0_u7), 5_u4, 2_u4));
  EXPECT_FALSE(events[0].as<NoteOn>()->midi1ZeroVelocityAsNoteOff);
}

TEST(MIDI1ParserTest, OnlyAChannelVoiceStatusRuns) {
  for (int status = 0; status <= 0xFF; ++status) {
    const auto given = static_cast<std::uint8_t>(status);
    const bool isChannelVoice = status >= 0x80 && status < 0xF0;
    const auto outcome = MIDI1Parser::parsedEvents(bytesOf("05 06"), 1_u4, given, true);
    ASSERT_EQ(outcome.events.empty(), !isChannelVoice) << status;
    ASSERT_EQ(outcome.runningStatus.has_value(), isChannelVoice) << status;

    MIDI1Parser parser;
    parser.parsedEvents(bytesOf("93"));
    parser.parsedEvents(Bytes{given});
    const auto expected = status < 0x80 || status >= 0xF8 ? 0x93 : isChannelVoice ? status : 0;
    ASSERT_EQ(parser.runningStatus().value_or(0), expected) << status;
  }
}

TEST(MIDI1ParserTest, OneMessageNeedsItsDataBytesInRange) {
  for (int status = 0; status <= 0xFF; ++status) {
    const bool takesTwo = status >= 0x80 && status < 0xF0 && status >> 5 != 0xC0 >> 5;
    const bool takesOne = status >= 0xC0 && status < 0xE0;
    const int needed = takesTwo || status == 0xF2 ? 2 : takesOne || status == 0xF1 || status == 0xF3 ? 1 : 0;
    const bool joinsBytes = status >> 4 == 0xE || status == 0xF2;
    const bool isKnown = status >= 0x80 && status != 0xF4 && status != 0xF5 && status != 0xF7 &&
                         status != 0xF9 && status != 0xFD;
    for (const auto data1 : bytesOf("05 85")) {
      for (const auto data2 : bytesOf("06 86")) {
        for (std::size_t size = 0; size <= 3; ++size) {
          Bytes message{static_cast<std::uint8_t>(status), data1, data2};
          message.resize(size);
          const bool isInRange = joinsBytes || ((needed < 1 || data1 < 0x80) && (needed < 2 || data2 < 0x80));
          bool expected = isKnown && isInRange && size > static_cast<std::size_t>(needed);
          if (status == 0xF0) {
            expected = parseSysEx7(message).hasValue();
          }
          const auto event = MIDI1Parser::parsedEvent(message, true, 9_u4);
          ASSERT_EQ(event.has_value(), expected) << status << ' ' << size;
          ASSERT_TRUE(!event || event->group() == 9_u4);
        }
      }
    }
  }
  EXPECT_EQ(MIDI1Parser::parsedEvent(bytesOf("E3 80 C0"), true),
            MIDIEvent::pitchBend(ChanVoice14Bit32BitValue::midi1(0x2000_u14), 3_u4));
}

/// Parses packets with both parsers; their events and their running status must be the same.
void expectPlain(std::span<const Bytes> packets, bool translate) {
  MIDI1Parser parser;
  parser.translateNoteOnZeroVelocityToNoteOff = translate;
  PlainMIDI1Parser plain;
  plain.translate = translate;
  for (const auto& packet : packets) {
    const auto expected = plain.parsedEvents(packet, 3_u4);
    const auto events = parser.parsedEvents(packet, 3_u4);
    ASSERT_TRUE(events == expected) << testing::PrintToString(packet);
    ASSERT_EQ(parser.runningStatus(), plain.runningStatus);
  }
}

void expectPlainAtEverySplit(const Bytes& stream) {
  for (std::size_t split = 0; split <= stream.size(); ++split) {
    const auto middle = stream.begin() + static_cast<std::ptrdiff_t>(split);
    const std::array packets{Bytes(stream.begin(), middle), Bytes(middle, stream.end())};
    expectPlain(packets, split % 2 == 0);
  }
}

TEST(MIDI1ParserTest, EveryPairOfStatusBytesIsReadByTheRules) {
  for (int first = 0x80; first <= 0xFF; ++first) {
    for (int second = 0x80; second <= 0xFF; ++second) {
      const auto a = static_cast<std::uint8_t>(first);
      const auto b = static_cast<std::uint8_t>(second);
      const Bytes streams[] = {
          {a, b, 1, 2, 3, 4}, {a, 1, b, 2, 3, 4}, {a, 1, 0, b, 3, 0, 5}, {a, 1, 2, 3, b, 0}};
      for (const auto& stream : streams) {
        expectPlain(std::span(&stream, 1), true);
      }
    }
  }
}

TEST(MIDI1ParserTest, AnyStreamSplitAnywhereIsReadByTheRules) {
  std::mt19937 random(20240229);
  const auto below = [&random](std::uint32_t bound) { return static_cast<std::uint8_t>(random() % bound); };
  for (int round = 0; round < 1500; ++round) {
    Bytes stream(below(40));
    for (auto& byte : stream) {
      // Half of it data, and many system messages, with some runs that are longer than a word.
      const auto kind = below(8);
      byte = kind < 5 ? below(0x80)
                      : static_cast<std::uint8_t>(kind == 5 ? 0x80 + below(0x70) : 0xF0 + below(16));
    }
    if (round % 3 == 0) {
      stream.insert(stream.begin(), 0xF0);
    }
    expectPlainAtEverySplit(stream);
  }
}

TEST(MIDI1ParserTest, EveryMessageComesBackFromItsBytes) {
  MIDI1Parser parser;
  parser.translateNoteOnZeroVelocityToNoteOff = false;
  for (int status = 0x80; status < 0xF0; ++status) {
    for (int data1 = 0; data1 < 0x80; ++data1) {
      for (const int data2 : {0, 1, 63, 64, 126, 127}) {
        Bytes bytes{static_cast<std::uint8_t>(status), static_cast<std::uint8_t>(data1)};
        if (status >> 5 != 0xC0 >> 5) {
          bytes.push_back(static_cast<std::uint8_t>(data2));
        }
        const auto events = parser.parsedEvents(bytes);
        ASSERT_EQ(events.size(), 1U);
        ASSERT_EQ(events[0].midi1Bytes(), bytes);
      }
    }
  }
}

}  // namespace
}  // namespace midikit::core

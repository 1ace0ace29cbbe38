#include "MIDIKitCore/MIDI1Parser.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <span>
#include <string>

#include "MIDIKitCore/SysExParser.hpp"
#include "tests/MIDIKitCore/Events.hpp"
#include "tests/MIDIKitCore/PlainMIDI1Parser.hpp"

namespace midikit::core {
namespace {

using namespace literals;

constexpr auto vel = Velocity::midi1;
constexpr auto val = Amount::midi1;

const MIDIEvent clock = MIDIEvent::timingClock();
const MIDIEvent noteOn = MIDIEvent::noteOn(0x3C_u7, vel(0x40_u7), 0_u4);
const MIDIEvent noteOn2 = MIDIEvent::noteOn(0x3E_u7, vel(0x40_u7), 0_u4);

MIDIEvent sysEx(const std::string& message) {
  return *parseSysEx7Hex(message);
}

TEST(MIDI1ParserTest, ReadsStreams) {
  const auto reset = MIDIEvent::systemReset();
  const auto program = [](UInt7 number) { return MIDIEvent::programChange(number, 0_u4); };
  // The packets of a stream are separated by "|".
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
      {"E0 00 40", {MIDIEvent::pitchBend(Bend::midi1(0x2000_u14), 0_u4)}},
      {"E1 7F 00", {MIDIEvent::pitchBend(Bend::midi1(127_u14), 1_u4)}},
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
  for (const auto& [stream, expected] : cases) {
    MIDI1Parser parser;
    Events events;
    for (const std::string& packet : partsOf(stream)) {
      parser.parse(bytesOf(packet), 0_u4, events);
    }
    expectEvents(events, expected, stream);
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
    const bool isChannelVoice = status >= 0x80 && status < 0xF0;
    const auto outcome =
        MIDI1Parser::parsedEvents(bytesOf("05 06"), 1_u4, static_cast<std::uint8_t>(status), true);
    ASSERT_EQ(outcome.events.empty(), !isChannelVoice) << status;
    ASSERT_EQ(outcome.runningStatus.has_value(), isChannelVoice) << status;
  }
}

TEST(MIDI1ParserTest, OneMessageNeedsItsDataBytesInRange) {
  for (int status = 0; status <= 0xFF; ++status) {
    Bytes message{static_cast<std::uint8_t>(status), 5, 6};
    const auto event = MIDI1Parser::parsedEvent(message, true, 9_u4);
    const auto inStream = MIDI1Parser().parsedEvents(message, 9_u4);
    ASSERT_EQ(event, inStream.empty() ? std::nullopt : std::optional(inStream.front())) << status;
    if (!event || event->isSysEx()) {
      continue;
    }
    const auto size = event->midi1Bytes().size();
    const bool ignoresHighBits = status >> 4 == 0xE || status == 0xF2;
    for (std::size_t at = 1; at < size; ++at) {
      EXPECT_FALSE(MIDI1Parser::parsedEvent(std::span(message).first(at), true)) << status;
      message[at] |= 0x80;
      EXPECT_EQ(MIDI1Parser::parsedEvent(message, true, 9_u4), ignoresHighBits ? event : std::nullopt);
      message[at] &= 0x7F;
    }
  }
  EXPECT_EQ(MIDI1Parser::parsedEvent(bytesOf("E3 C5 C0"), true),
            MIDIEvent::pitchBend(Bend::midi1(0x2045_u14), 3_u4));
  EXPECT_FALSE(MIDI1Parser::parsedEvent(bytesOf("F0 F7"), true));
  EXPECT_FALSE(MIDI1Parser::parsedEvent({}, true));
}

/// Parses a stream in two packets with both parsers; their events and their running status must be the same.
void expectPlain(const Bytes& stream, std::size_t split) {
  MIDI1Parser parser;
  PlainMIDI1Parser plain;
  parser.translateNoteOnZeroVelocityToNoteOff = plain.translate = split % 2 == 0;
  const std::span bytes(stream);
  for (const auto packet : {bytes.first(split), bytes.subspan(split)}) {
    ASSERT_TRUE(parser.parsedEvents(packet, 3_u4) == plain.parsedEvents(packet, 3_u4))
        << testing::PrintToString(stream) << " after " << split;
    ASSERT_EQ(parser.runningStatus(), plain.runningStatus);
  }
}

TEST(MIDI1ParserTest, EveryPairOfStatusBytesIsReadByTheRulesWhereverTheStreamIsSplit) {
  for (int first = 0x80; first <= 0xFF; ++first) {
    for (int second = 0x80; second <= 0xFF; ++second) {
      const auto a = static_cast<std::uint8_t>(first);
      const auto b = static_cast<std::uint8_t>(second);
      const Bytes streams[] = {{a, b, 1, 2, 3, 4},
                               {a, 1, b, 2, 3, 4},
                               {a, 1, 0, b, 3, 0, 5},
                               {a, 1, 2, 3, b, 0},
                               {0xF0, 0x41, 1, 2, 3, a, 5, 6, 7, 8, 9, 10, 11, 12, b, 13, 14}};
      for (const auto& stream : streams) {
        for (std::size_t split = 0; split < stream.size(); ++split) {
          expectPlain(stream, split);
        }
      }
    }
  }
}

}  // namespace
}  // namespace midikit::core

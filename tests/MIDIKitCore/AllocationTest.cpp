// What the parsers and encoders promise about memory. A program of its own, because it counts the allocations
// of the whole process.

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "MIDIKitCore/MIDI1Parser.hpp"
#include "MIDIKitCore/MIDI2Parser.hpp"
#include "tests/AllocationCounter.hpp"
#include "tests/MIDIKitCore/Events.hpp"

namespace midikit::core {
namespace {

using namespace literals;

/// Of the second time, when lists and buffers that are used again have their size.
template <class Work>
std::size_t allocationsOf(const Work& work) {
  work();
  const auto before = karvex::tests::allocationsSoFar();
  work();
  return karvex::tests::allocationsSoFar() - before;
}

Bytes sysEx(std::size_t length) {
  Bytes bytes = sevenBitBytes(length + 3);
  bytes[0] = 0xF0;
  bytes[1] = 0x41;
  bytes.back() = 0xF7;
  return bytes;
}

Bytes interrupted(Bytes bytes) {
  bytes.insert(bytes.begin() + 3, 0xF8);
  return bytes;
}

TEST(AllocationTest, OfTheByteParserIsOneForALongBodyAndOneToPutItTogether) {
  const struct {
    std::string what;
    Bytes bytes;
    std::size_t events;
    std::size_t allocations;
  } cases[] = {
      {"channel voice with running status", bytesOf("90 3C 40 3C 00 B0 07 64 E0 00 40 C0 05"), 5, 0},
      {"system", bytesOf("F8 F2 00 01 F6 FE"), 4, 0},
      {"an empty body", sysEx(0), 1, 0},
      {"the longest body inside of an event", sysEx(15), 1, 0},
      {"the shortest body outside", sysEx(16), 1, 1},
      {"a long body", sysEx(4096), 1, 1},
      {"a long body around a clock", interrupted(sysEx(4096)), 2, 2},
  };
  for (const auto& [what, bytes, expected, allocated] : cases) {
    MIDI1Parser parser;
    Events events;
    const auto parse = [&] {
      events.clear();
      parser.parse(bytes, 0_u4, events);
    };
    EXPECT_EQ(allocationsOf(parse), allocated) << what;
    EXPECT_EQ(events.size(), expected) << what;
  }
}

MIDIEvent sysEx7(std::size_t length) {
  return *MIDIEvent::sysEx7(SysExManufacturer::oneByte(0x41_u7), sevenBitBytes(length));
}
MIDIEvent sysEx8(std::size_t length) {
  return SysEx8(SysExManufacturer::oneByte(0x41_u7), SysExData(Bytes(length, 0xFF)), 3);
}

TEST(AllocationTest, OfPacketsIsOneForALongBody) {
  const auto velocity = ChanVoice7Bit16BitValue::midi2(5);
  const std::pair<MIDIEvent, std::size_t> cases[] = {
      {MIDIEvent::noteOn(60_u7, velocity, NoteAttribute::profileSpecific(5), 1_u4), 0},
      {MIDIEvent::rpn(RegisteredController::pitchBendSensitivity(1_u7, 2_u7), 1_u4), 0},
      {MIDIEvent::programChange(5_u7, Bank::bankSelect(5_u14), 1_u4), 0},
      {MIDIEvent::timingClock(), 0},
      {sysEx7(5), 0},
      {sysEx7(15), 0},
      {sysEx7(255), 1},
      {sysEx8(11), 0},
      {sysEx8(15), 0},
      {sysEx8(254), 1},
  };
  for (const auto& [event, allocated] : cases) {
    MIDI2Parser parser;
    Events events;
    const auto packets = event.umpWords(MIDIProtocolVersion::midi2_0);
    const auto parse = [&] {
      events.clear();
      for (const auto& packet : packets) {
        parser.parse(packet.words(), events);
      }
    };
    EXPECT_EQ(allocationsOf(parse), allocated) << event.debugDescription();
    EXPECT_EQ(events, Events{event});
  }
}

TEST(AllocationTest, OfEncodingIsNoneIntoAListThatIsUsedAgain) {
  const Events events = {MIDIEvent::noteOn(60_u7, ChanVoice7Bit16BitValue::unitInterval(0.5), 1_u4),
                         MIDIEvent::programChange(5_u7, Bank::bankSelect(5_u14), 1_u4),
                         sysEx7(5),
                         sysEx7(255),
                         sysEx8(254),
                         MIDIEvent::timingClock()};
  Bytes bytes;
  std::vector<std::uint32_t> words;
  Events copies;
  EXPECT_EQ(allocationsOf([&] {
              bytes.clear();
              words.clear();
              copies = events;
              appendMIDI1Bytes(events, bytes);
              appendUMPWords(events, MIDIProtocolVersion::midi1_0, words);
              appendUMPWords(events, MIDIProtocolVersion::midi2_0, words);
            }),
            0U);
}

}  // namespace
}  // namespace midikit::core

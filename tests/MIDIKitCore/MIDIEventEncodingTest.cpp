#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "MIDIKitCore/MIDIEvent.hpp"
#include "MIDIKitCore/UMPWords.hpp"
#include "tests/MIDIKitCore/Events.hpp"

namespace midikit::core {
namespace {

using namespace literals;
using Velocity = ChanVoice7Bit16BitValue;
using Amount = ChanVoice7Bit32BitValue;
using Bend = ChanVoice14Bit32BitValue;
using NoteValue = ChanVoice32BitValue;
using Words = std::vector<std::uint32_t>;

constexpr auto midi1_0 = MIDIProtocolVersion::midi1_0;
constexpr auto midi2_0 = MIDIProtocolVersion::midi2_0;

struct Row {
  MIDIEvent event;
  std::string bytes;
  Words words1;
  Words words2;
  std::string text;
};

std::vector<Row> channelVoiceRows() {
  const MIDINote rolandC(60_u7, MIDINote::Style::roland);
  return {
      {MIDIEvent::noteOn(60_u7, Velocity::midi1(64_u7), 1_u4, 2_u4),
       "91 3C 40",
       {0x22913C40},
       {0x42913C00, 0x80000000},
       "noteOn(0x3C, vel: midi1(64), chan: 0x1, group: 0x2)"},
      {MIDIEvent::noteOn(60_u7, Velocity::midi2(0x8000), NoteAttribute::pitch7_9({60_u7, 256_u9}), 15_u4),
       "9F 3C 40",
       {0x209F3C40},
       {0x409F3C03, 0x80007900},
       "noteOn(0x3C, vel: midi2(32768), pitch7.9(60, fine: 256), chan: 0xF, group: 0x0)"},
      {MIDIEvent::noteOff(5_u7, Velocity::unitInterval(1.0), NoteAttribute::undefined(9, 7), 0_u4),
       "80 05 7F",
       {0x2080057F},
       {0x40800509, 0xFFFF0007},
       "noteOff(0x5, vel: unitInterval(1), undefined(9, data: 7), chan: 0x0, group: 0x0)"},
      {MIDIEvent::noteOff(5_u7, Velocity::midi1(64_u7), NoteAttribute::profileSpecific(0x1234), 0_u4),
       "80 05 40",
       {0x20800540},
       {0x40800502, 0x80001234},
       "noteOff(0x5, vel: midi1(64), profileSpecific(4660), chan: 0x0, group: 0x0)"},
      {MIDIEvent::noteOff(5_u7, Velocity::midi2(0x8001), NoteAttribute::undefined(0xFF, 0xFFFF), 0_u4),
       "80 05 40",
       {0x20800540},
       {0x408005FF, 0x8001FFFF},
       "noteOff(0x5, vel: midi2(32769), undefined(255, data: 65535), chan: 0x0, group: 0x0)"},
      // The style of a note isn't sent.
      {MIDIEvent::noteOn(rolandC, Velocity::midi1(64_u7), 1_u4, 2_u4),
       "91 3C 40",
       {0x22913C40},
       {0x42913C00, 0x80000000},
       "noteOn(0x3C, vel: midi1(64), chan: 0x1, group: 0x2)"},
      {MIDIEvent::noteOff(rolandC, Velocity::midi2(0x8000), 1_u4, 2_u4),
       "81 3C 40",
       {0x22813C40},
       {0x42813C00, 0x80000000},
       "noteOff(0x3C, vel: midi2(32768), chan: 0x1, group: 0x2)"},
      {MIDIEvent::notePressure(rolandC, Amount::midi1(64_u7), 1_u4, 2_u4),
       "A1 3C 40",
       {0x22A13C40},
       {0x42A13C00, 0x80000000},
       "notePressure(note: 0x3C, amount: midi1(64), chan: 0x1, group: 0x2)"},
      {MIDIEvent::noteCC(60_u7, PerNoteController::registered(PerNoteController::Registered::volume),
                         NoteValue::midi2(5), 1_u4, 2_u4),
       "",
       {0x42013C07, 5},
       {0x42013C07, 5},
       "noteCC(note: 0x3C, controller: registered(7), val: midi2(5), chan: 0x1, group: 0x2)"},
      {MIDIEvent::noteCC(60_u7, PerNoteController::assignable(255), NoteValue::unitInterval(0.5), 1_u4),
       "",
       {0x40113CFF, 0x80000000},
       {0x40113CFF, 0x80000000},
       "noteCC(note: 0x3C, controller: assignable(255), val: unitInterval(0.5), chan: 0x1, group: 0x0)"},
      {MIDIEvent::notePitchBend(60_u7, NoteValue::midi2(0x80000000), 1_u4),
       "",
       {0x40613C00, 0x80000000},
       {0x40613C00, 0x80000000},
       "notePitchBend(note: 0x3C, value: midi2(2147483648), chan: 0x1, group: 0x0)"},
      {MIDIEvent::notePressure(60_u7, Amount::midi1(127_u7), 1_u4),
       "A1 3C 7F",
       {0x20A13C7F},
       {0x40A13C00, 0xFFFFFFFF},
       "notePressure(note: 0x3C, amount: midi1(127), chan: 0x1, group: 0x0)"},
      {MIDIEvent::noteManagement(
           60_u7, OptionFlags{OptionFlag::detachPerNoteControllers, OptionFlag::resetPerNoteControllers},
           1_u4),
       "",
       {0x40F13C03, 0},
       {0x40F13C03, 0},
       "noteManagement(options: [detachPerNoteControllers, resetPerNoteControllers], note: 0x3C, chan: 0x1, "
       "group: 0x0)"},
      {MIDIEvent::noteManagement(60_u7, OptionFlag::detachPerNoteControllers, 1_u4),
       "",
       {0x40F13C02, 0},
       {0x40F13C02, 0},
       "noteManagement(options: [detachPerNoteControllers], note: 0x3C, chan: 0x1, group: 0x0)"},
      {MIDIEvent::cc(Controller::lsb(ControllerLSB::bankSelect), Amount::midi2(0x12345678), 9_u4, 15_u4),
       "B9 20 09",
       {0x2FB92009},
       {0x4FB92000, 0x12345678},
       "cc(Bank Select LSB, val: midi2(305419896), chan: 0x9, group: 0xF)"},
      {MIDIEvent::programChange(5_u7, 2_u4),
       "C2 05",
       {0x20C20500},
       {0x40C20000, 0x05000000},
       "prgChange(5, bank: noBankSelect, chan: 0x2, group: 0x0)"},
      {MIDIEvent::programChange(5_u7, Bank::bankSelect(0x3F7F_u14), 2_u4),
       "B2 00 7E B2 20 7F C2 05",
       {0x20C20500},
       {0x40C20001, 0x05007E7F},
       "prgChange(5, bank: bankSelect(16255), chan: 0x2, group: 0x0)"},
      {MIDIEvent::pitchBend(Bend::midi1(8193_u14), 3_u4),
       "E3 01 40",
       {0x20E30140},
       {0x40E30000, Bend::midi1(8193_u14).midi2Value()},
       "pitchBend(midi1(8193), chan: 0x3, group: 0x0)"},
      {MIDIEvent::pitchBend(Bend::bipolarUnitInterval(-2.0), 3_u4),
       "E3 00 00",
       {0x20E30000},
       {0x40E30000, 0},
       "pitchBend(bipolarUnitInterval(-1), chan: 0x3, group: 0x0)"},
      {MIDIEvent::pressure(Amount::unitInterval(0.75), 3_u4, 1_u4),
       "D3 5F",
       {0x21D35F00},
       {0x41D30000, 0xBFFFFFFF},
       "pressure(amount: unitInterval(0.75), chan: 0x3, group: 0x1)"},
      {MIDIEvent::rpn(RegisteredController::pitchBendSensitivity(2_u7, 0_u7), 0_u4),
       "B0 65 00 B0 64 00 B0 06 02 B0 26 00",
       {0x20B06500, 0x20B06400, 0x20B00602, 0x20B02600},
       {0x40200000, 0x04000000},
       "rpn(pitchBendSensitivity(semitones: 2, cents: 0), change: absolute, chan: 0x0, group: 0x0)"},
      {MIDIEvent::nrpn(AssignableController::null(), MIDI2ParameterNumberChange::relative, 0_u4),
       "B0 63 7F B0 62 7F",
       {0x20B0637F, 0x20B0627F},
       {0x40507F7F, 0},
       "nrpn(null, change: relative, chan: 0x0, group: 0x0)"},
  };
}

std::vector<Row> otherRows() {
  const Bytes data = {1, 2};
  const auto manufacturer = SysExManufacturer::threeByte(0x21_u7, 9_u7);
  const auto nonRealTime = UniversalSysExType::nonRealTime;
  const auto real = [](const MIDIEvent& event, const std::string& byte, std::uint32_t word,
                       const std::string& tag) {
    return Row{event, byte, {word}, {word}, tag + "(group: 0x3)"};
  };
  return {
      {*MIDIEvent::sysEx7(manufacturer, data, 3_u4),
       "F0 00 21 09 01 02 F7",
       {0x33050021, 0x09010200},
       {0x33050021, 0x09010200},
       "sysEx7(mfr: 0x00 0x21 0x09, data: [0x01, 0x02], group: 0x3)"},
      {*MIDIEvent::universalSysEx7(nonRealTime, 0x7F_u7, 6_u7, 1_u7, data),
       "F0 7E 7F 06 01 01 02 F7",
       {0x30067E7F, 0x06010102},
       {0x30067E7F, 0x06010102},
       "universalSysEx7(nonRealTime, deviceID: 0x7F, subID1: 0x6, subID2: 0x1, data: [0x01, 0x02], group: "
       "0x0)"},
      {MIDIEvent::sysEx8(manufacturer, SysExData(data), std::uint8_t{7}, 3_u4),
       "",
       {0x530507A1, 0x09010200, 0, 0},
       {0x530507A1, 0x09010200, 0, 0},
       "sysEx8(mfr: 0x00 0x21 0x09, data: [0x01, 0x02], streamID: 0x7, group: 0x3)"},
      {MIDIEvent::universalSysEx8(nonRealTime, 0x7F_u7, 6_u7, 1_u7, SysExData(data)),
       "",
       {0x50080000, 0x7E7F0601, 0x01020000, 0},
       {0x50080000, 0x7E7F0601, 0x01020000, 0},
       "universalSysEx8(nonRealTime, deviceID: 0x7F, subID1: 0x6, subID2: 0x1, data: [0x01, 0x02], "
       "streamID: 0x0, group: 0x0)"},
      {MIDIEvent::timecodeQuarterFrame(0x71_u7, 3_u4),
       "F1 71",
       {0x13F17100},
       {0x13F17100},
       "timecodeQF(0x71, group: 0x3)"},
      {MIDIEvent::songPositionPointer(0x3F7E_u14, 3_u4),
       "F2 7E 7E",
       {0x13F27E7E},
       {0x13F27E7E},
       "songPositionPointer(beat: 16254, group: 0x3)"},
      {MIDIEvent::songSelect(5_u7, 3_u4),
       "F3 05",
       {0x13F30500},
       {0x13F30500},
       "songSelect(number: 5, group: 0x3)"},
      {MIDIEvent::unofficialBusSelect(5_u7, 3_u4),
       "F5 05",
       {0x13F50500},
       {0x13F50500},
       "unofficialBusSelect(bus: 5, group: 0x3)"},
      real(MIDIEvent::tuneRequest(3_u4), "F6", 0x13F60000, "tuneRequest"),
      real(MIDIEvent::timingClock(3_u4), "F8", 0x13F80000, "timingClock"),
      real(MIDIEvent::start(3_u4), "FA", 0x13FA0000, "start"),
      real(MIDIEvent::continue_(3_u4), "FB", 0x13FB0000, "continue"),
      real(MIDIEvent::stop(3_u4), "FC", 0x13FC0000, "stop"),
      real(MIDIEvent::activeSensing(3_u4), "FE", 0x13FE0000, "activeSensing"),
      real(MIDIEvent::systemReset(3_u4), "FF", 0x13FF0000, "systemReset"),
      real(MIDIEvent::noOp(3_u4), "", 0x03000000, "noOp"),
      {MIDIEvent::jrClock(std::uint16_t{0xABCD}, 3_u4),
       "",
       {0x0310ABCD},
       {0x0310ABCD},
       "jrClock(43981, group: 0x3)"},
      {MIDIEvent::jrTimestamp(std::uint16_t{0xABCD}, 3_u4),
       "",
       {0x0320ABCD},
       {0x0320ABCD},
       "jrTimestamp(43981, group: 0x3)"},
  };
}

std::vector<Row> allRows() {
  std::vector<Row> rows = channelVoiceRows();
  std::ranges::copy(otherRows(), std::back_inserter(rows));
  return rows;
}

Words flat(const std::vector<UMPPacket>& packets) {
  Words words;
  for (const UMPPacket& packet : packets) {
    words.insert(words.end(), packet.begin(), packet.end());
  }
  return words;
}

/// The rule that each way of encoding has to give the same, into too little room nothing.
void expectEncoded(const MIDIEvent& event, const Bytes& bytes, const Words& words1, const Words& words2) {
  EXPECT_EQ(event.midi1Bytes(), bytes);
  Bytes written(bytes.size(), 0xAA);
  EXPECT_EQ(event.writeMIDI1Bytes(written), bytes.size());
  EXPECT_EQ(written, bytes);
  for (const auto& [protocol, words] : {std::pair(midi1_0, words1), std::pair(midi2_0, words2)}) {
    EXPECT_EQ(flat(event.umpWords(protocol)), words);
    Words writtenWords(words.size(), 0xAAAAAAAA);
    EXPECT_EQ(event.writeUMPWords(protocol, writtenWords), words.size());
    EXPECT_EQ(writtenWords, words);
    Words tooSmall(words.size() - 1, 0xAAAAAAAA);
    EXPECT_EQ(event.writeUMPWords(protocol, tooSmall), words.size());
    EXPECT_EQ(tooSmall, Words(words.size() - 1, 0xAAAAAAAA));
  }
  if (!bytes.empty()) {
    Bytes tooSmall(bytes.size() - 1, 0xAA);
    EXPECT_EQ(event.writeMIDI1Bytes(tooSmall), bytes.size());
    EXPECT_EQ(tooSmall, Bytes(bytes.size() - 1, 0xAA));
  }
}

TEST(MIDIEventEncodingTest, EveryCaseHasItsBytesItsPacketsAndItsText) {
  for (const Row& row : allRows()) {
    SCOPED_TRACE(row.text);
    expectEncoded(row.event, bytesOf(row.bytes), row.words1, row.words2);
    EXPECT_EQ(row.event.debugDescription(), row.text);
  }
}

TEST(MIDIEventEncodingTest, TheTextOfALongBodyIsCutOff) {
  const auto textOf = [](std::size_t length) {
    return MIDIEvent(*SysEx7::make(SysExManufacturer::oneByte(0x41_u7), Bytes(length, 5))).debugDescription();
  };
  std::string all;
  for (int byte = 0; byte < 64; ++byte) {
    all += byte == 0 ? "0x05" : ", 0x05";
  }
  EXPECT_EQ(textOf(64), "sysEx7(mfr: 0x41, data: [" + all + "], group: 0x0)");
  EXPECT_EQ(textOf(65), "sysEx7(mfr: 0x41, data: [" + all + "] and so on, 65 bytes, group: 0x0)");
}

TEST(MIDIEventEncodingTest, AListGivesWhatItsEventsGiveOneByOne) {
  Events events;
  Bytes bytes = {0xAA};
  Words words1 = {0xAAAAAAAA};
  Words words2 = words1;
  for (int round = 0; round < 20; ++round) {
    for (const Row& row : allRows()) {
      events.push_back(row.event);
      std::ranges::copy(bytesOf(row.bytes), std::back_inserter(bytes));
      std::ranges::copy(row.words1, std::back_inserter(words1));
      std::ranges::copy(row.words2, std::back_inserter(words2));
    }
  }
  Bytes appended = {0xAA};
  appendMIDI1Bytes(events, appended);
  EXPECT_EQ(appended, bytes);
  for (const auto& [protocol, words] : {std::pair(midi1_0, words1), std::pair(midi2_0, words2)}) {
    Words appendedWords = {0xAAAAAAAA};
    appendUMPWords(events, protocol, appendedWords);
    EXPECT_EQ(appendedWords, words);
  }
  appendMIDI1Bytes({}, appended);
  EXPECT_EQ(appended, bytes);
}

struct VelocityRow {
  Velocity velocity;
  bool zeroIsNoteOff;
  std::string bytes;
};

TEST(MIDIEventEncodingTest, ANoteOnHasRulesForAVelocityOfZero) {
  for (const VelocityRow& row : {VelocityRow{Velocity::midi1(0_u7), true, "85 3C 00"},
                                 {Velocity::midi1(0_u7), false, "95 3C 00"},
                                 {Velocity::midi1(1_u7), true, "95 3C 01"},
                                 {Velocity::unitInterval(0.0), true, "85 3C 00"},
                                 {Velocity::unitInterval(0.0), false, "95 3C 00"},
                                 {Velocity::unitInterval(0.5), true, "95 3C 40"},
                                 {Velocity::midi2(0), true, "95 3C 01"},
                                 {Velocity::midi2(0), false, "95 3C 01"},
                                 {Velocity::midi2(511), true, "95 3C 01"},
                                 {Velocity::midi2(0x0400), true, "95 3C 02"}}) {
    const MIDIEvent event = MIDIEvent::noteOn(60_u7, row.velocity, 5_u4, 1_u4, row.zeroIsNoteOff);
    SCOPED_TRACE(event.debugDescription());
    const Bytes bytes = bytesOf(row.bytes);
    const std::uint32_t velocity = row.velocity.midi2Value();
    expectEncoded(event, bytes, {umpWord(0x21, bytes[0], bytes[1], bytes[2])}, {0x41953C00, velocity << 16});
  }
  EXPECT_EQ(MIDIEvent::noteOff(60_u7, Velocity::midi2(511), 0_u4).midi1Bytes(), bytesOf("80 3C 00"));
}

/// `data1` and `data2` as in the byte stream; a message without the second has -1.
void expectVoice(const MIDIEvent& event, unsigned status, unsigned data1, int data2, std::uint32_t number,
                 std::uint32_t value) {
  const auto byte = [](unsigned number8) { return static_cast<std::uint8_t>(number8); };
  const unsigned channel = 6;
  const unsigned group = 11;
  Bytes bytes = {byte(status | channel), byte(data1)};
  if (data2 >= 0) {
    bytes.push_back(byte(static_cast<unsigned>(data2)));
  }
  Bytes appended;
  event.appendMIDI1Bytes(appended);
  ASSERT_EQ(appended, bytes) << event.debugDescription();
  Words words;
  event.appendUMPWords(midi1_0, words);
  event.appendUMPWords(midi2_0, words);
  const std::uint8_t third = data2 < 0 ? std::uint8_t{0} : bytes[2];
  ASSERT_EQ(words, (Words{umpWord(byte(0x20 | group), bytes[0], bytes[1], third),
                          umpWord(byte(0x40 | group), bytes[0], byte(number), 0), value}))
      << event.debugDescription();
}

TEST(MIDIEventEncodingTest, EverySevenBitValueGoesOutAsItIs) {
  for (int number = 0; number <= 127; ++number) {
    const UInt7 value(number);
    const auto key = static_cast<unsigned>(127 - number);
    const UInt7 note(key);
    const std::uint32_t velocity = Velocity::midi1(value).midi2Value();
    const std::uint32_t amount = Amount::midi1(value).midi2Value();
    expectVoice(MIDIEvent::noteOn(note, Velocity::midi1(value), 6_u4, 11_u4), 0x90, key, number, key,
                velocity << 16);
    expectVoice(MIDIEvent::noteOff(note, Velocity::midi1(value), 6_u4, 11_u4), 0x80, key, number, key,
                velocity << 16);
    expectVoice(MIDIEvent::notePressure(note, Amount::midi1(value), 6_u4, 11_u4), 0xA0, key, number, key,
                amount);
    expectVoice(MIDIEvent::cc(note, Amount::midi1(value), 6_u4, 11_u4), 0xB0, key, number, key, amount);
    expectVoice(MIDIEvent::pressure(Amount::midi1(value), 6_u4, 11_u4), 0xD0, value.value(), -1, 0, amount);
  }
}

TEST(MIDIEventEncodingTest, EveryBendOfFourteenBitsGoesOutAsItIs) {
  for (unsigned bend = 0; bend <= 0x3FFF; ++bend) {
    const Bend value = Bend::midi1(UInt14(bend));
    expectVoice(MIDIEvent::pitchBend(value, 6_u4, 11_u4), 0xE0, bend % 128, static_cast<int>(bend / 128), 0,
                value.midi2Value());
  }
}

TEST(MIDIEventEncodingTest, EverySongPositionGoesOutAsItIs) {
  for (unsigned beat = 0; beat <= 0x3FFF; ++beat) {
    const UInt4 group(beat % 16);
    const MIDIEvent event = MIDIEvent::songPositionPointer(UInt14(beat), group);
    const Bytes bytes = {0xF2, static_cast<std::uint8_t>(beat % 128), static_cast<std::uint8_t>(beat / 128)};
    const std::uint32_t word = umpWord(0x10 | group.value(), bytes[0], bytes[1], bytes[2]);
    ASSERT_EQ(event.midi1Bytes(), bytes);
    ASSERT_EQ(flat(event.umpWords(midi1_0)), Words{word});
    ASSERT_EQ(flat(event.umpWords(midi2_0)), Words{word});
  }
}

// The body may look like any other payload to whoever doesn't ask for the case first.
TEST(MIDIEventEncodingTest, ABodyIsTakenForNothingElse) {
  const auto manufacturer = SysExManufacturer::oneByte(0x41_u7);
  for (unsigned byte = 0; byte <= 0xFF; ++byte) {
    const Bytes body(11, static_cast<std::uint8_t>(byte));
    const MIDIEvent event = SysEx8(manufacturer, SysExData(body), 7);
    const std::uint32_t four = byte * 0x01010101U;
    const Words words = {0x500E0700, 0x41000000U | (four & 0xFFFFFF), four, four};
    EXPECT_EQ(flat(event.umpWords(midi1_0)), words);
    EXPECT_EQ(flat(event.umpWords(midi2_0)), words);
    EXPECT_TRUE(event.midi1Bytes().empty());
  }
}

TEST(MIDIEventEncodingTest, WiderValuesGoOutWithoutTheirLowBits) {
  for (std::uint32_t upper = 0; upper <= 0xFFFF; upper += 7) {
    const std::uint32_t word = upper << 16 | (~upper & 0xFFFF);
    const auto velocity = static_cast<std::uint16_t>(upper);
    const int seven = static_cast<int>(upper >> 9);
    expectVoice(MIDIEvent::noteOn(1_u7, Velocity::midi2(velocity), 6_u4, 11_u4), 0x90, 1, std::max(seven, 1),
                1, upper << 16);
    expectVoice(MIDIEvent::noteOff(1_u7, Velocity::midi2(velocity), 6_u4, 11_u4), 0x80, 1, seven, 1,
                upper << 16);
    expectVoice(MIDIEvent::notePressure(1_u7, Amount::midi2(word), 6_u4, 11_u4), 0xA0, 1, seven, 1, word);
    expectVoice(MIDIEvent::cc(1_u7, Amount::midi2(word), 6_u4, 11_u4), 0xB0, 1, seven, 1, word);
    expectVoice(MIDIEvent::pressure(Amount::midi2(word), 6_u4, 11_u4), 0xD0, upper >> 9, -1, 0, word);
    expectVoice(MIDIEvent::pitchBend(Bend::midi2(word), 6_u4, 11_u4), 0xE0, word >> 18 & 0x7F,
                static_cast<int>(word >> 25), 0, word);
  }
}

TEST(UMPWordsTest, JoinsAndFlattens) {
  EXPECT_EQ(umpWord(std::uint16_t{0x1234}, std::uint16_t{0x5678}), 0x12345678U);
  EXPECT_EQ(umpWord(0x12, 0x34, 0x56, 0x78), 0x12345678U);
  EXPECT_EQ(umpBytes(Words{0x12345678, 0x9ABCDEF0}), bytesOf("12 34 56 78 9A BC DE F0"));
  EXPECT_TRUE(umpBytes({}).empty());
}

}  // namespace
}  // namespace midikit::core

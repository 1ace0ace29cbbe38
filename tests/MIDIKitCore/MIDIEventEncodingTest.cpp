#include <algorithm>
#include <cstdint>
#include <iterator>
#include <string>
#include <vector>

#include "MIDIKitCore/MIDIEvent.hpp"
#include "MIDIKitCore/wire/UMPWords.hpp"
#include "tests/MIDIKitCore/Events.hpp"

namespace midikit::core {
namespace {

using namespace literals;
using Words = std::vector<std::uint32_t>;

constexpr auto midi1_0 = MIDIProtocolVersion::midi1_0;
constexpr auto midi2_0 = MIDIProtocolVersion::midi2_0;

/// What an event becomes on each wire.
struct Wire {
  Bytes bytes;
  Words words1;
  Words words2;
};

/// "bytes | words of MIDI 1.0 | words of MIDI 2.0"; without the last, the words are the same in both.
Wire wireOf(const std::string& text) {
  const auto parts = partsOf(text);
  return {bytesOf(parts[0]), bytesOf<std::uint32_t>(parts[1]), bytesOf<std::uint32_t>(parts.back())};
}

struct Row {
  MIDIEvent event;
  std::string wire;
  std::string text;
};

std::vector<Row> noteRows() {
  using Registered = PerNoteController::Registered;
  const MIDINote styled(60_u7, MIDINote::Style::roland);  // the style isn't sent
  const auto noteOff = [](const Velocity& velocity, NoteAttribute attribute) {
    return MIDIEvent::noteOff(5_u7, velocity, attribute, 0_u4);
  };
  return {
      {MIDIEvent::noteOn(styled, Velocity::midi1(64_u7), 1_u4, 2_u4),
       "91 3C 40 | 22913C40 | 42913C00 80000000", "noteOn(0x3C, vel: midi1(64), chan: 0x1, group: 0x2)"},
      {MIDIEvent::noteOn(60_u7, Velocity::midi2(0x8000), NoteAttribute::pitch7_9({60_u7, 256_u9}), 15_u4),
       "9F 3C 40 | 209F3C40 | 409F3C03 80007900",
       "noteOn(0x3C, vel: midi2(32768), pitch7.9(60, fine: 256), chan: 0xF, group: 0x0)"},
      {MIDIEvent::noteOff(styled, Velocity::midi2(0x8000), 1_u4, 2_u4),
       "81 3C 40 | 22813C40 | 42813C00 80000000", "noteOff(0x3C, vel: midi2(32768), chan: 0x1, group: 0x2)"},
      {noteOff(Velocity::unitInterval(1.0), NoteAttribute::undefined(9, 7)),
       "80 05 7F | 2080057F | 40800509 FFFF0007",
       "noteOff(0x5, vel: unitInterval(1), undefined(9, data: 7), chan: 0x0, group: 0x0)"},
      {noteOff(Velocity::midi1(64_u7), NoteAttribute::undefined(0, 7)),
       "80 05 40 | 20800540 | 40800500 80000007",
       "noteOff(0x5, vel: midi1(64), undefined(0, data: 7), chan: 0x0, group: 0x0)"},
      {noteOff(Velocity::midi2(0x8001), NoteAttribute::profileSpecific(0x1234)),
       "80 05 40 | 20800540 | 40800502 80011234",
       "noteOff(0x5, vel: midi2(32769), profileSpecific(4660), chan: 0x0, group: 0x0)"},
      {MIDIEvent::notePressure(styled, Amount::midi1(127_u7), 1_u4, 2_u4),
       "A1 3C 7F | 22A13C7F | 42A13C00 FFFFFFFF",
       "notePressure(note: 0x3C, amount: midi1(127), chan: 0x1, group: 0x2)"},
      {MIDIEvent::noteCC(60_u7, PerNoteController::registered(Registered::volume), NoteValue::midi2(5), 1_u4),
       " | 40013C07 5",
       "noteCC(note: 0x3C, controller: registered(7), val: midi2(5), chan: 0x1, group: 0x0)"},
      {MIDIEvent::noteCC(60_u7, PerNoteController::assignable(255), NoteValue::unitInterval(0.5), 1_u4, 2_u4),
       " | 42113CFF 80000000",
       "noteCC(note: 0x3C, controller: assignable(255), val: unitInterval(0.5), chan: 0x1, group: 0x2)"},
      {MIDIEvent::notePitchBend(60_u7, NoteValue::midi2(0x80000000), 1_u4), " | 40613C00 80000000",
       "notePitchBend(note: 0x3C, value: midi2(2147483648), chan: 0x1, group: 0x0)"},
      {MIDIEvent::noteManagement(60_u7, OptionFlags::fromRawValue(0xFF), 1_u4), " | 40F13C03 0",
       "noteManagement(options: [detachPerNoteControllers, resetPerNoteControllers], note: 0x3C, chan: 0x1, "
       "group: 0x0)"},
      {MIDIEvent::noteManagement(60_u7, OptionFlag::detachPerNoteControllers, 1_u4), " | 40F13C02 0",
       "noteManagement(options: [detachPerNoteControllers], note: 0x3C, chan: 0x1, group: 0x0)"},
  };
}

std::vector<Row> channelRows() {
  using Registered = RegisteredController;
  using Assignable = AssignableController;
  const auto sensitivity = Registered::pitchBendSensitivity(2_u7, 0_u7);
  const auto relative = MIDI2ParameterNumberChange::relative;
  return {
      {MIDIEvent::cc(Controller::lsb(ControllerLSB::bankSelect), Amount::midi2(0x12345678), 9_u4, 15_u4),
       "B9 20 09 | 2FB92009 | 4FB92000 12345678",
       "cc(Bank Select LSB, val: midi2(305419896), chan: 0x9, group: 0xF)"},
      {MIDIEvent::programChange(5_u7, 2_u4), "C2 05 | 20C20500 | 40C20000 05000000",
       "prgChange(5, bank: noBankSelect, chan: 0x2, group: 0x0)"},
      {MIDIEvent::programChange(5_u7, Bank::bankSelect(0x3F7F_u14), 2_u4),
       "B2 00 7E B2 20 7F C2 05 | 20C20500 | 40C20001 05007E7F",
       "prgChange(5, bank: bankSelect(16255), chan: 0x2, group: 0x0)"},
      {MIDIEvent::pitchBend(Bend::midi1(8193_u14), 3_u4), "E3 01 40 | 20E30140 | 40E30000 80040020",
       "pitchBend(midi1(8193), chan: 0x3, group: 0x0)"},
      {MIDIEvent::pitchBend(Bend::bipolarUnitInterval(-0.5), 3_u4), "E3 00 20 | 20E30020 | 40E30000 40000000",
       "pitchBend(bipolarUnitInterval(-0.5), chan: 0x3, group: 0x0)"},
      {MIDIEvent::pressure(Amount::unitInterval(0.75), 3_u4, 1_u4), "D3 5F | 21D35F00 | 41D30000 BFFFFFFF",
       "pressure(amount: unitInterval(0.75), chan: 0x3, group: 0x1)"},
      {MIDIEvent::rpn(sensitivity, 3_u4, 5_u4),
       "B3 65 00 B3 64 00 B3 06 02 B3 26 00 | 25B36500 25B36400 25B30602 25B32600 | 45230000 04000000",
       "rpn(pitchBendSensitivity(semitones: 2, cents: 0), change: absolute, chan: 0x3, group: 0x5)"},
      {MIDIEvent::rpn(sensitivity, relative, 0_u4),
       "B0 65 00 B0 64 00 B0 06 02 B0 26 00 | 20B06500 20B06400 20B00602 20B02600 | 40400000 04000000",
       "rpn(pitchBendSensitivity(semitones: 2, cents: 0), change: relative, chan: 0x0, group: 0x0)"},
      {MIDIEvent::rpn(Registered::tuningBankSelect(64_u7), 0_u4),
       "B0 65 00 B0 64 04 B0 06 40 | 20B06500 20B06404 20B00640 | 40200004 80000000",
       "rpn(tuningBankSelect(zero-based: 64), change: absolute, chan: 0x0, group: 0x0)"},
      {MIDIEvent::rpn(Registered::mpeConfigurationMessage({}, 8_u7), 0_u4),
       "B0 65 00 B0 64 06 B0 26 08 | 20B06500 20B06406 20B02608 | 40200006 00200000",
       "rpn(mpeConfigurationMessage(dataMSB: nil (0), dataLSB: 8), change: absolute, chan: 0x0, group: 0x0)"},
      {MIDIEvent::nrpn(Assignable::raw({1_u7, 2_u7}, 127_u7, 127_u7), 1_u4),
       "B1 63 01 B1 62 02 B1 06 7F B1 26 7F | 20B16301 20B16202 20B1067F 20B1267F | 40310102 FFFFFFFF",
       "nrpn(raw(param: [msb: 0x01, lsb: 0x02], dataMSB: 127, dataLSB: 127), change: absolute, chan: 0x1, "
       "group: 0x0)"},
      {MIDIEvent::nrpn(Assignable::null(), relative, 0_u4),
       "B0 63 7F B0 62 7F | 20B0637F 20B0627F | 40507F7F 0",
       "nrpn(null, change: relative, chan: 0x0, group: 0x0)"},
  };
}

std::vector<Row> otherRows() {
  const Bytes data = {1, 2};
  const auto manufacturer = SysExManufacturer::threeByte(0x21_u7, 9_u7);
  const auto nonRealTime = UniversalSysExType::nonRealTime;
  return {
      {*MIDIEvent::sysEx7(manufacturer, data, 3_u4), "F0 00 21 09 01 02 F7 | 33050021 09010200",
       "sysEx7(mfr: 0x00 0x21 0x09, data: [0x01, 0x02], group: 0x3)"},
      {*MIDIEvent::universalSysEx7(nonRealTime, 0x7F_u7, 6_u7, 1_u7, data),
       "F0 7E 7F 06 01 01 02 F7 | 30067E7F 06010102",
       "universalSysEx7(nonRealTime, deviceID: 0x7F, subID1: 0x6, subID2: 0x1, data: [0x01, 0x02], group: "
       "0x0)"},
      {MIDIEvent::sysEx8(manufacturer, SysExData(data), std::uint8_t{7}, 3_u4), " | 530507A1 09010200 0 0",
       "sysEx8(mfr: 0x00 0x21 0x09, data: [0x01, 0x02], streamID: 0x7, group: 0x3)"},
      {MIDIEvent::universalSysEx8(nonRealTime, 0x7F_u7, 6_u7, 1_u7, SysExData(data)),
       " | 50080000 7E7F0601 01020000 0",
       "universalSysEx8(nonRealTime, deviceID: 0x7F, subID1: 0x6, subID2: 0x1, data: [0x01, 0x02], "
       "streamID: 0x0, group: 0x0)"},
      {MIDIEvent::timecodeQuarterFrame(0x71_u7, 3_u4), "F1 71 | 13F17100", "timecodeQF(0x71, group: 0x3)"},
      {MIDIEvent::songPositionPointer(0x3F01_u14, 3_u4), "F2 01 7E | 13F2017E",
       "songPositionPointer(beat: 16129, group: 0x3)"},
      {MIDIEvent::songSelect(5_u7, 3_u4), "F3 05 | 13F30500", "songSelect(number: 5, group: 0x3)"},
      {MIDIEvent::unofficialBusSelect(5_u7, 3_u4), "F5 05 | 13F50500",
       "unofficialBusSelect(bus: 5, group: 0x3)"},
      {MIDIEvent::tuneRequest(3_u4), "F6 | 13F60000", "tuneRequest(group: 0x3)"},
      {MIDIEvent::timingClock(3_u4), "F8 | 13F80000", "timingClock(group: 0x3)"},
      {MIDIEvent::start(3_u4), "FA | 13FA0000", "start(group: 0x3)"},
      {MIDIEvent::continue_(3_u4), "FB | 13FB0000", "continue(group: 0x3)"},
      {MIDIEvent::stop(3_u4), "FC | 13FC0000", "stop(group: 0x3)"},
      {MIDIEvent::activeSensing(3_u4), "FE | 13FE0000", "activeSensing(group: 0x3)"},
      {MIDIEvent::systemReset(3_u4), "FF | 13FF0000", "systemReset(group: 0x3)"},
      {MIDIEvent::noOp(3_u4), " | 03000000", "noOp(group: 0x3)"},
      {MIDIEvent::jrClock(std::uint16_t{0xABCD}, 3_u4), " | 0310ABCD", "jrClock(43981, group: 0x3)"},
      {MIDIEvent::jrTimestamp(std::uint16_t{0xABCD}, 3_u4), " | 0320ABCD", "jrTimestamp(43981, group: 0x3)"},
  };
}

std::vector<Row> allRows() {
  std::vector<Row> rows = noteRows();
  std::ranges::copy(channelRows(), std::back_inserter(rows));
  std::ranges::copy(otherRows(), std::back_inserter(rows));
  return rows;
}

/// An operation that writes into what it's given says how much that takes, and writes all or nothing.
template <class Unit, class Write>
void expectWritten(const std::vector<Unit>& expected, const Write& write) {
  for (const std::size_t room :
       {expected.size(), expected.size() - std::min<std::size_t>(expected.size(), 1)}) {
    std::vector<Unit> into(room, 0xAA);
    EXPECT_EQ(write(into), expected.size());
    EXPECT_EQ(into, room == expected.size() ? expected : std::vector<Unit>(room, 0xAA));
  }
}

/// The rule that each way of encoding has to give the same.
void expectEncoded(const MIDIEvent& event, const Wire& wire) {
  EXPECT_EQ(event.midi1Bytes(), wire.bytes);
  expectWritten(wire.bytes, [&event](Bytes& into) { return event.writeMIDI1Bytes(into); });
  for (const MIDIProtocolVersion protocol : {midi1_0, midi2_0}) {
    const Words& words = protocol == midi1_0 ? wire.words1 : wire.words2;
    Words flat;
    for (const UMPPacket& packet : event.umpWords(protocol)) {
      std::ranges::copy(packet, std::back_inserter(flat));
    }
    EXPECT_EQ(flat, words);
    expectWritten(words, [&event, protocol](Words& into) { return event.writeUMPWords(protocol, into); });
  }
}

TEST(MIDIEventEncodingTest, EveryCaseHasItsBytesItsPacketsAndItsText) {
  for (const auto& [event, wire, text] : allRows()) {
    SCOPED_TRACE(text);
    expectEncoded(event, wireOf(wire));
    EXPECT_EQ(event.debugDescription(), text);
  }
}

TEST(MIDIEventEncodingTest, TheTextOfALongBodyIsCutOff) {
  std::string all = "sysEx7(mfr: 0x41, data: [0x05";
  for (int byte = 1; byte < 64; ++byte) {
    all += ", 0x05";
  }
  for (const auto& [length, end] : {std::pair(64U, "]"), std::pair(65U, "] and so on, 65 bytes")}) {
    const auto event = *MIDIEvent::sysEx7(SysExManufacturer::oneByte(0x41_u7), Bytes(length, 5));
    EXPECT_EQ(event.debugDescription(), all + end + ", group: 0x0)");
  }
}

TEST(MIDIEventEncodingTest, AListGivesWhatItsEventsGiveOneByOne) {
  Events events;
  Wire expected{{0xAA}, {0xAAAAAAAA}, {0xAAAAAAAA}};
  Wire appended = expected;
  for (int round = 0; round < 20; ++round) {
    for (const Row& row : allRows()) {
      events.push_back(row.event);
      const auto [bytes, words1, words2] = wireOf(row.wire);
      std::ranges::copy(bytes, std::back_inserter(expected.bytes));
      std::ranges::copy(words1, std::back_inserter(expected.words1));
      std::ranges::copy(words2, std::back_inserter(expected.words2));
    }
  }
  appendMIDI1Bytes(events, appended.bytes);
  appendMIDI1Bytes({}, appended.bytes);
  EXPECT_EQ(appended.bytes, expected.bytes);
  appendUMPWords(events, midi1_0, appended.words1);
  EXPECT_EQ(appended.words1, expected.words1);
  appendUMPWords(events, midi2_0, appended.words2);
  EXPECT_EQ(appended.words2, expected.words2);
}

TEST(MIDIEventEncodingTest, ANoteOnHasRulesForAVelocityOfZero) {
  const struct {
    Velocity velocity;
    bool zeroIsNoteOff;
    std::string wire;
  } rows[] = {{Velocity::midi1(0_u7), true, "85 3C 00 | 21853C00 | 41953C00 0"},
              {Velocity::midi1(0_u7), false, "95 3C 00 | 21953C00 | 41953C00 0"},
              {Velocity::midi1(1_u7), true, "95 3C 01 | 21953C01 | 41953C00 02000000"},
              {Velocity::unitInterval(0.0), true, "85 3C 00 | 21853C00 | 41953C00 0"},
              {Velocity::unitInterval(0.0), false, "95 3C 00 | 21953C00 | 41953C00 0"},
              {Velocity::unitInterval(0.5), true, "95 3C 40 | 21953C40 | 41953C00 80000000"},
              {Velocity::midi2(0), true, "95 3C 01 | 21953C01 | 41953C00 0"},
              {Velocity::midi2(0), false, "95 3C 01 | 21953C01 | 41953C00 0"},
              {Velocity::midi2(511), true, "95 3C 01 | 21953C01 | 41953C00 01FF0000"},
              {Velocity::midi2(0x0400), true, "95 3C 02 | 21953C02 | 41953C00 04000000"}};
  for (const auto& [velocity, zeroIsNoteOff, wire] : rows) {
    const MIDIEvent event = MIDIEvent::noteOn(60_u7, velocity, 5_u4, 1_u4, zeroIsNoteOff);
    SCOPED_TRACE(event.debugDescription());
    expectEncoded(event, wireOf(wire));
  }
}

/// On channel 6 of group 11. `data` are the bytes behind the status, `number` and `value` what MIDI 2.0 has.
void expectVoice(const MIDIEvent& event, unsigned status, std::vector<unsigned> data, unsigned number,
                 std::uint32_t value) {
  const auto byte = [](unsigned wide) { return static_cast<std::uint8_t>(wide); };
  Bytes bytes = {byte(status | 6)};
  std::ranges::transform(data, std::back_inserter(bytes), byte);
  Bytes appended;
  event.appendMIDI1Bytes(appended);
  ASSERT_EQ(appended, bytes) << event.debugDescription();
  Words words;
  event.appendUMPWords(midi1_0, words);
  event.appendUMPWords(midi2_0, words);
  bytes.resize(3);
  ASSERT_EQ(words, (Words{umpWord(0x2B, bytes[0], bytes[1], bytes[2]),
                          umpWord(0x4B, bytes[0], byte(number), 0), value}))
      << event.debugDescription();
}

/// Each event with a 7-bit value, whatever the form in which it's held.
void expectVoices(UInt7 note, const Velocity& velocity, const Amount& amount) {
  const unsigned key = note.value();
  const unsigned velocity7 = velocity.midi1Value().value();
  const unsigned least = velocity.form() == ChanVoiceValueForm::midi2 ? 1 : 0;
  const unsigned amount7 = amount.midi1Value().value();
  const auto velocityWord = std::uint32_t{velocity.midi2Value()} << 16;
  expectVoice(MIDIEvent::noteOn(note, velocity, 6_u4, 11_u4), 0x90, {key, std::max(velocity7, least)}, key,
              velocityWord);
  expectVoice(MIDIEvent::noteOff(note, velocity, 6_u4, 11_u4), 0x80, {key, velocity7}, key, velocityWord);
  const auto word = amount.midi2Value();
  expectVoice(MIDIEvent::notePressure(note, amount, 6_u4, 11_u4), 0xA0, {key, amount7}, key, word);
  expectVoice(MIDIEvent::cc(note, amount, 6_u4, 11_u4), 0xB0, {key, amount7}, key, word);
  expectVoice(MIDIEvent::pressure(amount, 6_u4, 11_u4), 0xD0, {amount7}, 0, word);
}

TEST(MIDIEventEncodingTest, AValueOfSevenBitsGoesOutFromEveryForm) {
  for (int number = 0; number <= 127; ++number) {
    const UInt7 value(number);
    const UInt7 note(127 - number);
    expectVoices(note, Velocity::midi1(value), Amount::midi1(value));
    expectVoices(note, Velocity::unitInterval(number / 127.0), Amount::unitInterval(number / 127.0));
  }
  for (std::uint32_t upper = 0; upper <= 0xFFFF; upper += 7) {
    expectVoices(1_u7, Velocity::midi2(static_cast<std::uint16_t>(upper)),
                 Amount::midi2(upper << 16 | (~upper & 0xFFFF)));
  }
}

TEST(MIDIEventEncodingTest, ABendGoesOutFromEveryForm) {
  for (unsigned number = 0; number <= 0x3FFF; ++number) {
    for (const Bend& bend :
         {Bend::midi1(UInt14(number)), Bend::midi2(number << 18 | number),
          Bend::unitInterval(number / 16383.0), Bend::bipolarUnitInterval(number / 8191.5 - 1)}) {
      const unsigned sent = bend.midi1Value().value();
      expectVoice(MIDIEvent::pitchBend(bend, 6_u4, 11_u4), 0xE0, {sent % 128, sent / 128}, 0,
                  bend.midi2Value());
    }
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

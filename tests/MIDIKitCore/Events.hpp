#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <ostream>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "MIDIKitCore/MIDIEvent.hpp"

namespace midikit::core {

/// What a failed test prints.
inline void PrintTo(const MIDIEvent& event, std::ostream* out) {
  *out << event.debugDescription();
}

using Bytes = std::vector<std::uint8_t>;
using Events = std::vector<MIDIEvent>;
using Velocity = ChanVoice7Bit16BitValue;
using Amount = ChanVoice7Bit32BitValue;
using Bend = ChanVoice14Bit32BitValue;
using NoteValue = ChanVoice32BitValue;

/// Numbers in hexadecimal, as in "90 3C 40".
template <class Number = std::uint8_t>
std::vector<Number> bytesOf(const std::string& text) {
  std::istringstream in(text);
  std::vector<Number> numbers;
  for (std::uint32_t number = 0; in >> std::hex >> number;) {
    numbers.push_back(static_cast<Number>(number));
  }
  return numbers;
}

/// The parts of a text between "|".
inline std::vector<std::string> partsOf(const std::string& text) {
  std::istringstream in(text);
  std::vector<std::string> parts(1);
  while (std::getline(in, parts.back(), '|')) {
    parts.emplace_back();
  }
  parts.pop_back();
  return parts;
}

/// `count` bytes that begin with `first` and go on by steps that visit every 7-bit value.
inline Bytes sevenBitBytes(std::size_t count, std::uint8_t first = 0) {
  Bytes bytes(count);
  for (std::size_t i = 0; i < count; ++i) {
    bytes[i] = static_cast<std::uint8_t>((first + i * 5) % 128);
  }
  return bytes;
}

/// One event of each case, in their order, each in the group after that of the one before.
inline Events oneOfEach(UInt4 channel, int group = 0) {
  using namespace literals;
  const auto next = [&group] { return UInt4(group++ % 16); };
  const auto manufacturer = SysExManufacturer::oneByte(0x41_u7);
  const auto realTime = UniversalSysExType::realTime;
  const auto assignable = PerNoteController::assignable(9);
  const Bytes data = {1, 2, 3};
  return {
      MIDIEvent::noteOn(60_u7, Velocity::midi1(64_u7), channel, next()),
      MIDIEvent::noteOff(60_u7, Velocity::midi1(64_u7), channel, next()),
      MIDIEvent::noteCC(60_u7, assignable, NoteValue::midi2(5), channel, next()),
      MIDIEvent::notePitchBend(60_u7, NoteValue::midi2(5), channel, next()),
      MIDIEvent::notePressure(60_u7, Amount::midi1(64_u7), channel, next()),
      MIDIEvent::noteManagement(60_u7, OptionFlags(), channel, next()),
      MIDIEvent::cc(7_u7, Amount::midi1(64_u7), channel, next()),
      MIDIEvent::programChange(5_u7, channel, next()),
      MIDIEvent::pitchBend(Bend::midi1(64_u14), channel, next()),
      MIDIEvent::pressure(Amount::midi1(64_u7), channel, next()),
      MIDIEvent::rpn(RegisteredController::null(), channel, next()),
      MIDIEvent::nrpn(AssignableController::null(), channel, next()),
      *MIDIEvent::sysEx7(manufacturer, data, next()),
      *MIDIEvent::universalSysEx7(realTime, 1_u7, 2_u7, 3_u7, data, next()),
      MIDIEvent::sysEx8(manufacturer, SysExData(data), std::uint8_t{4}, next()),
      MIDIEvent::universalSysEx8(realTime, 1_u7, 2_u7, 3_u7, SysExData(data), std::uint8_t{4}, next()),
      MIDIEvent::timecodeQuarterFrame(5_u7, next()),
      MIDIEvent::songPositionPointer(5_u14, next()),
      MIDIEvent::songSelect(5_u7, next()),
      MIDIEvent::unofficialBusSelect(5_u7, next()),
      MIDIEvent::tuneRequest(next()),
      MIDIEvent::timingClock(next()),
      MIDIEvent::start(next()),
      MIDIEvent::continue_(next()),
      MIDIEvent::stop(next()),
      MIDIEvent::activeSensing(next()),
      MIDIEvent::systemReset(next()),
      MIDIEvent::noOp(next()),
      MIDIEvent::jrClock(std::uint16_t{5}, next()),
      MIDIEvent::jrTimestamp(std::uint16_t{5}, next()),
  };
}

/// The events are equal, and so is the form in which each holds its value, which equality overlooks.
inline void expectEvents(const Events& actual, const Events& expected, const std::string& what) {
  EXPECT_EQ(actual, expected) << what;
  EXPECT_EQ(testing::PrintToString(actual), testing::PrintToString(expected)) << what;
}

/// One number for a text of any length (FNV-1a), which a change of any letter changes.
constexpr std::uint64_t digestOf(std::string_view text) {
  std::uint64_t digest = 0xCBF29CE484222325;
  for (const char letter : text) {
    digest = (digest ^ static_cast<unsigned char>(letter)) * 0x100000001B3;
  }
  return digest;
}

}  // namespace midikit::core

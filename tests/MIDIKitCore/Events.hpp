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

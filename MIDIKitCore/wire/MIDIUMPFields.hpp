#pragma once

#include <cstdint>
#include <optional>

#include "MIDIKitCore/numbers/UInt.hpp"

namespace midikit::core {

// The fields of a Universal MIDI Packet that tell what it is, with their numbers on the wire (Universal MIDI
// Packet specification). Each is four bits wide and has a conversion that gives none for a number without a
// case.

/// The message type, the upper nibble of the first byte.
enum class MIDIUMPMessageType : std::uint8_t {
  utility = 0x0,
  systemRealTimeAndCommon = 0x1,
  midi1ChannelVoice = 0x2,
  data64bit = 0x3,
  midi2ChannelVoice = 0x4,
  data128bit = 0x5,
};

/// Which piece of a system exclusive message a packet carries.
enum class MIDIUMPSysExStatusField : std::uint8_t { complete = 0x0, start = 0x1, continue_ = 0x2, end = 0x3 };

/// Which piece of a mixed data set a packet carries.
enum class MIDIUMPMixedDataSetStatusField : std::uint8_t { header = 0x8, payload = 0x9 };

/// The kind of a utility message.
enum class MIDIUMPUtilityStatusField : std::uint8_t { noOp = 0x0, jrClock = 0x1, jrTimestamp = 0x2 };

constexpr std::optional<MIDIUMPMessageType> midiUMPMessageType(UInt4 rawValue) {
  return rawValue.value() <= 0x5 ? std::optional(static_cast<MIDIUMPMessageType>(rawValue.value()))
                                 : std::nullopt;
}

constexpr std::optional<MIDIUMPSysExStatusField> midiUMPSysExStatusField(UInt4 rawValue) {
  return rawValue.value() <= 0x3 ? std::optional(static_cast<MIDIUMPSysExStatusField>(rawValue.value()))
                                 : std::nullopt;
}

constexpr std::optional<MIDIUMPMixedDataSetStatusField> midiUMPMixedDataSetStatusField(UInt4 rawValue) {
  return rawValue.value() == 0x8 || rawValue.value() == 0x9
             ? std::optional(static_cast<MIDIUMPMixedDataSetStatusField>(rawValue.value()))
             : std::nullopt;
}

constexpr std::optional<MIDIUMPUtilityStatusField> midiUMPUtilityStatusField(UInt4 rawValue) {
  return rawValue.value() <= 0x2 ? std::optional(static_cast<MIDIUMPUtilityStatusField>(rawValue.value()))
                                 : std::nullopt;
}

}  // namespace midikit::core

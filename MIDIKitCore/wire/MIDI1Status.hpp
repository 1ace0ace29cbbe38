#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace midikit::core {

// The status bytes of the MIDI 1.0 specification, as far as anyone needs to tell them apart.
inline constexpr std::uint8_t firstStatus = 0x80;
inline constexpr std::uint8_t firstSystemStatus = 0xF0;
inline constexpr std::uint8_t firstRealTimeStatus = 0xF8;

inline constexpr std::uint8_t sysExStatus = 0xF0;
inline constexpr std::uint8_t timecodeStatus = 0xF1;
inline constexpr std::uint8_t songPositionStatus = 0xF2;
inline constexpr std::uint8_t songSelectStatus = 0xF3;
/// An unofficial one. It is sent, but nobody reads it.
inline constexpr std::uint8_t busSelectStatus = 0xF5;
inline constexpr std::uint8_t tuneRequestStatus = 0xF6;
inline constexpr std::uint8_t sysExEndStatus = 0xF7;

/// The size in bytes of a message with that status byte, which is at least 0x80, as it is sent; 0 for system
/// exclusive, its end, and statuses without a message.
constexpr std::size_t midi1MessageSize(unsigned status) {
  constexpr std::array<std::uint8_t, 16> bySystemStatus = {0, 2, 3, 2, 0, 2, 1, 0, 1, 0, 1, 1, 1, 0, 1, 1};
  constexpr std::array<std::uint8_t, 8> byOpcode = {3, 3, 3, 3, 2, 2, 3, 0};
  return status < firstSystemStatus ? byOpcode[status >> 4 & 7] : bySystemStatus[status & 15];
}

/// Whether a reader of bytes knows a message of a fixed size with that status byte.
constexpr bool isMIDI1Message(std::uint8_t status) {
  return status >= firstStatus && status != busSelectStatus && midi1MessageSize(status) != 0;
}

/// Whether the bytes are one channel voice message, whole and with its status.
constexpr bool isChannelVoiceMessage(std::span<const std::uint8_t> bytes) {
  if (bytes.empty() || bytes.front() < firstStatus || bytes.front() >= firstSystemStatus ||
      bytes.size() != midi1MessageSize(bytes.front())) {
    return false;
  }
  return bytes[1] < firstStatus && bytes.back() < firstStatus;  // There are no others.
}

/// How many data bytes follow that status byte in a message that isMIDI1Message(); 0 for all others.
constexpr std::uint8_t midi1DataBytes(std::uint8_t status) {
  return isMIDI1Message(status) ? static_cast<std::uint8_t>(midi1MessageSize(status) - 1) : 0;
}

}  // namespace midikit::core

#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "MIDIKitCore/wire/MIDIProtocolVersion.hpp"
#include "MIDIKitIO/platform/MIDIServiceTypes.hpp"

/// The platform's lists, made of messages. Pure functions; time stamps are in units of
/// MIDIService::machAbsoluteTime.
namespace midikit::io {

/// The most bytes that a list of several messages may have, its headers included.
inline constexpr std::size_t maximumPacketListSize = 65536;

/// The most words of one universal packet.
inline constexpr std::size_t maximumEventPacketWords = 64;

/// A list with one packet, of as many bytes as there are: the limit is for lists of several messages.
///
/// Thread-safe: yes.
/// Realtime-safe: no, it allocates for more than 16 bytes.
MIDIPacketList packetListOf(std::span<const std::uint8_t> message, std::uint64_t timeStamp);

/// A list with one packet for each message, in order, an empty one included.
/// @throws MIDIKitInternalError if the list would have more than maximumPacketListSize bytes: 4, and for each
/// message 10 and its own
///
/// Thread-safe: yes.
/// Realtime-safe: no, it allocates for a second packet.
MIDIPacketList packetListOf(std::span<const std::span<const std::uint8_t>> messages, std::uint64_t timeStamp);

/// A list with one packet, of 1 to 64 words.
/// @throws MIDIKitInternalError for any other number of words
///
/// Thread-safe: yes.
/// Realtime-safe: yes.
MIDIEventList eventListOf(std::span<const std::uint32_t> words, core::MIDIProtocolVersion protocol,
                          std::uint64_t timeStamp);

}  // namespace midikit::io

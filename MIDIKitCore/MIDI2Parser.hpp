#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <span>
#include <vector>

#include "MIDIKitCore/MIDIEvent.hpp"
#include "MIDIKitCore/detail/SysExBuffer.hpp"

namespace midikit::core {

/// A record of one Universal MIDI Packet: its `bytes` are in the order in which the words are sent, the most
/// significant byte of the first word first.
template <typename Packet>
concept UniversalPacket = requires(const Packet& packet) { std::span<const std::uint8_t>(packet.bytes); };

/// Turns Universal MIDI Packets into events. It never fails: a packet that it can't read gives no event and
/// changes nothing.
///
/// System exclusive messages come in pieces, and stay here until the last one has come. There is one 7-bit
/// message under way at a time, whatever its group, and one 8-bit message for each stream ID; a new start
/// throws the earlier pieces away.
///
/// Not thread-safe: belongs to the thread on which its packets arrive.
class MIDI2Parser {
 public:
  static constexpr std::size_t defaultSysExLimit = std::size_t{1} << 20;

  /// `sysExLimit` is how many bytes one message in pieces may have, its identifier and stream ID included. A
  /// longer one is dropped whole. The memory for a message grows by doubling and may have up to twice as many
  /// bytes. A hostile sender can have 256 8-bit messages under way.
  explicit MIDI2Parser(std::size_t sysExLimit = defaultSysExLimit) : sysExLimit_(sysExLimit) {}

  /// The events of one packet, given as the bytes of its words, the most significant byte first. More than
  /// one only behind a timestamp: what follows it in the packet.
  std::vector<MIDIEvent> parsedEvents(std::span<const std::uint8_t> packet);

  template <UniversalPacket Packet>
  std::vector<MIDIEvent> parsedEvents(const Packet& packet) {
    return parsedEvents(std::span<const std::uint8_t>(packet.bytes));
  }

  /// The same for a packet given as its words.
  std::vector<MIDIEvent> parsedEvents(std::span<const std::uint32_t> packet);

  /// Puts the events of one packet behind what `into` holds. Allocates where `into` or a buffer has to grow,
  /// and once for the body of a system exclusive message of more than 15 bytes.
  void parse(std::span<const std::uint8_t> packet, std::vector<MIDIEvent>& into);
  void parse(std::span<const std::uint32_t> packet, std::vector<MIDIEvent>& into);

 private:
  void parseData64(std::span<const std::uint8_t, 8> packet, std::vector<MIDIEvent>& into);
  void parseData128(std::span<const std::uint8_t, 16> packet, std::vector<MIDIEvent>& into);

  std::size_t sysExLimit_;
  SysExBuffer sysEx7MultiPartUMPBuffer_;
  /// By stream ID, with which each message begins.
  std::map<std::uint8_t, SysExBuffer> sysEx8MultiPartUMPBuffer_;
};

}  // namespace midikit::core

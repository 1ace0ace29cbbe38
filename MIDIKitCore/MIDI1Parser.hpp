#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "MIDIKitCore/MIDIEvent.hpp"
#include "MIDIKitCore/numbers/UInt.hpp"

namespace midikit::core {

/// Turns the packets of a MIDI 1.0 byte stream into events. It never fails: what it doesn't understand it
/// drops.
///
/// All that it remembers from one packet to the next is the running status, so a message has to arrive in one
/// packet. One that the end of the packet cuts off is lost, but for a system exclusive message, which comes
/// out with the bytes so far. A real-time message inside another one comes out first.
///
/// A system exclusive message is read when the next status byte arrives or the packet ends, without its 0xF7.
/// So a universal message with nothing behind its second sub-ID (an identity request) gives no event: see
/// `parseSysEx7` in SysExParser.hpp for the rule.
///
/// Not thread-safe: belongs to the thread on which its packets arrive.
class MIDI1Parser {
 public:
  /// What a packet gave, and the running status behind it.
  struct Outcome {
    std::vector<MIDIEvent> events;
    std::optional<std::uint8_t> runningStatus;
  };

  /// The events of a packet. `group` is the group of all of them, 0 for traffic that has none.
  std::vector<MIDIEvent> parsedEvents(std::span<const std::uint8_t> bytes, UInt4 group = {});

  /// The same, without a parser: from a running status to the one behind the packet. One that isn't a channel
  /// voice status (0x80 to 0xEF) counts as none.
  static Outcome parsedEvents(std::span<const std::uint8_t> bytes, UInt4 group,
                              std::optional<std::uint8_t> runningStatus,
                              bool translateNoteOnZeroVelocityToNoteOff);

  /// The event of one whole message, which begins with its status byte; none if there's a data byte missing,
  /// if one is above 0x7F, or if nothing is known by that status. Bytes behind the message don't matter.
  ///
  /// Two exceptions: the data bytes of a pitch bend and of a song position pointer (0xE0 to 0xEF, 0xF2) lose
  /// their high bit instead; and a system exclusive message is all of `message`, so that it's none if
  /// anything stands behind its 0xF7.
  static std::optional<MIDIEvent> parsedEvent(std::span<const std::uint8_t> message,
                                              bool translateNoteOnZeroVelocityToNoteOff, UInt4 group = {});

  /// Puts the events of a packet behind what `into` holds. Allocates where `into` has to grow, once for the
  /// body of a system exclusive message of more than 15 bytes, and once more for any message that real-time
  /// messages interrupt.
  void parse(std::span<const std::uint8_t> bytes, UInt4 group, std::vector<MIDIEvent>& into);

  /// The last channel voice status, unless a system common or system exclusive one came behind it.
  std::optional<std::uint8_t> runningStatus() const;

  /// Whether a note-on with velocity 0 becomes a note-off.
  bool translateNoteOnZeroVelocityToNoteOff = true;

 private:
  /// 0 for none.
  std::uint8_t runningStatus_ = 0;
};

}  // namespace midikit::core

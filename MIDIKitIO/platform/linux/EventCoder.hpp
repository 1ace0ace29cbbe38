#pragma once

#include <alsa/asoundlib.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

/// MIDI 1.0 bytes and the sequencer's events: one is turned into the other without a device.
namespace midikit::io::alsa {

/// The bytes of a system exclusive message that one event carries. The kernel's own events have as many.
inline constexpr std::size_t sysExPiece = 256;

/// Makes events of bytes. A system exclusive message may go over any number of calls. Not locked.
class EventEncoder {
 public:
  EventEncoder();

  /// Takes bytes off the front until they make an event, which has no addresses. What it points to is valid
  /// until the next call. None, and no bytes are left, when they make no further one.
  std::optional<snd_seq_event_t> next(std::span<const std::uint8_t>& bytes);

  /// Forgets the message that has begun, and the running status.
  void reset();

 private:
  std::uint8_t runningStatus_ = 0;  ///< which the coder doesn't know of yet; 0 for none
  std::unique_ptr<snd_midi_event_t, void (*)(snd_midi_event_t*)> coder_;
};

/// Makes bytes of events. Not locked.
class EventDecoder {
 public:
  EventDecoder();

  /// Puts the bytes of an event after the others, a status byte in each message; nothing for events that
  /// aren't MIDI. Values out of range are cut to what MIDI has.
  void decode(const snd_seq_event_t& event, std::vector<std::uint8_t>& out);

 private:
  std::unique_ptr<snd_midi_event_t, void (*)(snd_midi_event_t*)> coder_;
};

}  // namespace midikit::io::alsa

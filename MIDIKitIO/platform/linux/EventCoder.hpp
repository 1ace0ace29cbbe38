#pragma once

#include <alsa/asoundlib.h>

#include <cstdint>
#include <functional>
#include <memory>
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

  /// Calls `sink` with each event, without addresses. What it points to is valid during the call alone.
  void encode(std::span<const std::uint8_t> bytes, const std::function<void(snd_seq_event_t&)>& sink);

  /// Forgets the message that has begun, and the running status. Allowed inside the sink.
  void reset();

 private:
  std::unique_ptr<snd_midi_event_t, void (*)(snd_midi_event_t*)> coder_;
};

/// Makes bytes of events. Not locked.
class EventDecoder {
 public:
  EventDecoder();

  /// Puts the bytes of an event behind the others, a status byte in each message; nothing for events that
  /// aren't MIDI. Values out of range are cut to what MIDI has.
  void decode(const snd_seq_event_t& event, std::vector<std::uint8_t>& out);

 private:
  std::unique_ptr<snd_midi_event_t, void (*)(snd_midi_event_t*)> coder_;
};

}  // namespace midikit::io::alsa

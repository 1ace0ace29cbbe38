#include "MIDIKitIO/platform/linux/EventCoder.hpp"

#include <array>
#include <new>

namespace midikit::io::alsa {

namespace {

std::unique_ptr<snd_midi_event_t, void (*)(snd_midi_event_t*)> makeCoder() {
  snd_midi_event_t* coder = nullptr;
  if (snd_midi_event_new(sysExPiece, &coder) < 0) {
    throw std::bad_alloc();
  }
  snd_midi_event_no_status(coder, 1);
  return {coder, snd_midi_event_free};
}

/// The longest message but for system exclusive ones: four controllers that make a parameter number.
constexpr std::size_t longestMessage = 12;

}  // namespace

EventEncoder::EventEncoder() : coder_(makeCoder()) {}

std::optional<snd_seq_event_t> EventEncoder::next(std::span<const std::uint8_t>& bytes) {
  while (!bytes.empty()) {
    snd_seq_event_t event{};
    const long taken =
        snd_midi_event_encode(coder_.get(), bytes.data(), static_cast<long>(bytes.size()), &event);
    bytes = bytes.subspan(taken > 0 ? static_cast<std::size_t>(taken) : bytes.size());
    if (event.type != SND_SEQ_EVENT_NONE) {
      return event;
    }
  }
  return std::nullopt;
}

void EventEncoder::reset() {
  snd_midi_event_reset_encode(coder_.get());
}

EventDecoder::EventDecoder() : coder_(makeCoder()) {}

void EventDecoder::decode(const snd_seq_event_t& event, std::vector<std::uint8_t>& out) {
  if (event.type == SND_SEQ_EVENT_SYSEX) {
    const auto* bytes = static_cast<const std::uint8_t*>(event.data.ext.ptr);
    if (snd_seq_ev_is_variable(&event) && bytes != nullptr) {
      out.insert(out.end(), bytes, bytes + event.data.ext.len);
    }
    return;
  }
  std::array<std::uint8_t, longestMessage> message{};
  const long length = snd_midi_event_decode(coder_.get(), message.data(), message.size(), &event);
  if (length > 0) {
    out.insert(out.end(), message.begin(), message.begin() + length);
  }
}

}  // namespace midikit::io::alsa

#include "MIDIKitIO/platform/linux/EventCoder.hpp"

#include <array>
#include <new>
#include <utility>

#include "MIDIKitCore/wire/MIDI1Status.hpp"

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

/// Makes a new event that of a channel voice message, given its bytes.
void setChannelVoice(snd_seq_event_t& event, std::span<const std::uint8_t> message) {
  const auto set = [&event, channel = message[0] & 0x0F](snd_seq_event_type type, int parameter, int value) {
    event.type = static_cast<snd_seq_event_type_t>(type);
    event.data.control.channel = static_cast<unsigned char>(channel);
    event.data.control.param = static_cast<unsigned>(parameter);
    event.data.control.value = value;
  };
  const auto setNote = [&event, message](snd_seq_event_type type) {
    event.type = static_cast<snd_seq_event_type_t>(type);
    event.data.note.channel = message[0] & 0x0F;
    event.data.note.note = message[1];
    event.data.note.velocity = message[2];
  };
  switch (message[0] >> 4U) {
    case 0x8:
      setNote(SND_SEQ_EVENT_NOTEOFF);
      break;
    case 0x9:
      setNote(SND_SEQ_EVENT_NOTEON);
      break;
    case 0xA:
      setNote(SND_SEQ_EVENT_KEYPRESS);
      break;
    case 0xB:
      set(SND_SEQ_EVENT_CONTROLLER, message[1], message[2]);
      break;
    case 0xC:
      set(SND_SEQ_EVENT_PGMCHANGE, 0, message[1]);
      break;
    case 0xD:
      set(SND_SEQ_EVENT_CHANPRESS, 0, message[1]);
      break;
    default:
      set(SND_SEQ_EVENT_PITCHBEND, 0, (message[2] << 7 | message[1]) - 8192);
      break;
  }
}

}  // namespace

EventEncoder::EventEncoder() : coder_(makeCoder()) {}

/// The library's coder takes ten times as long for most of what there is to send, so it gets the rest alone.
std::optional<snd_seq_event_t> EventEncoder::next(std::span<const std::uint8_t>& bytes) {
  std::optional<snd_seq_event_t> made(std::in_place);
  if (core::isChannelVoiceMessage(bytes)) {
    runningStatus_ = bytes.front();
    setChannelVoice(*made, std::exchange(bytes, {}));
    return made;
  }
  if (runningStatus_ != 0 && !bytes.empty()) {
    snd_seq_event_t event{};
    snd_midi_event_encode_byte(coder_.get(), std::exchange(runningStatus_, 0), &event);
  }
  while (!bytes.empty()) {
    made.emplace();
    const long taken =
        snd_midi_event_encode(coder_.get(), bytes.data(), static_cast<long>(bytes.size()), &*made);
    bytes = bytes.subspan(taken > 0 ? static_cast<std::size_t>(taken) : bytes.size());
    if (made->type != SND_SEQ_EVENT_NONE) {
      return made;
    }
  }
  made.reset();
  return made;
}

void EventEncoder::reset() {
  runningStatus_ = 0;
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

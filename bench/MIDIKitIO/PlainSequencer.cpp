#include "bench/MIDIKitIO/PlainSequencer.hpp"

namespace midikit::bench {
namespace {

constexpr std::uint8_t velocity = 100;
/// What ends the listening thread: an event that nobody sends as MIDI.
constexpr snd_seq_event_type_t goodbye = SND_SEQ_EVENT_USR0;

}  // namespace

PlainSequencer::PlainSequencer(Arrivals& arrivals) : arrivals_(arrivals) {
  isThere_ = connect();
  if (isThere_) {
    thread_ = std::jthread([this] { listen(); });
  }
}

bool PlainSequencer::connect() {
  if (snd_seq_open(&sender_, "hw", SND_SEQ_OPEN_OUTPUT, 0) < 0 ||
      snd_seq_open(&listener_, "hw", SND_SEQ_OPEN_INPUT, 0) < 0 ||
      snd_seq_parse_address(sender_, &through_, "Midi Through:0") < 0) {
    return false;
  }
  constexpr unsigned type = SND_SEQ_PORT_TYPE_MIDI_GENERIC | SND_SEQ_PORT_TYPE_APPLICATION;
  sendPort_ = snd_seq_create_simple_port(sender_, "out", SND_SEQ_PORT_CAP_READ, type);
  listenPort_ = snd_seq_create_simple_port(listener_, "in", SND_SEQ_PORT_CAP_WRITE, type);
  return sendPort_ >= 0 && listenPort_ >= 0 &&
         snd_seq_connect_from(listener_, listenPort_, through_.client, through_.port) >= 0;
}

PlainSequencer::~PlainSequencer() {
  if (thread_.joinable()) {
    snd_seq_event_t event{};
    event.type = goodbye;
    snd_seq_ev_set_source(&event, static_cast<unsigned char>(sendPort_));
    snd_seq_ev_set_dest(&event, through_.client, through_.port);
    snd_seq_ev_set_direct(&event);
    snd_seq_event_output_direct(sender_, &event);
    thread_.join();
  }
  for (snd_seq_t* handle : {sender_, listener_}) {
    if (handle != nullptr) {
      snd_seq_close(handle);
    }
  }
}

void PlainSequencer::send(std::uint8_t note) {
  snd_seq_event_t event{};
  event.type = SND_SEQ_EVENT_NOTEON;
  event.data.note.note = note;
  event.data.note.velocity = velocity;
  snd_seq_ev_set_source(&event, static_cast<unsigned char>(sendPort_));
  snd_seq_ev_set_dest(&event, through_.client, through_.port);
  snd_seq_ev_set_direct(&event);
  snd_seq_event_output_direct(sender_, &event);
}

void PlainSequencer::listen() {
  snd_seq_event_t* event = nullptr;
  while (snd_seq_event_input(listener_, &event) >= 0 && event->type != goodbye) {
    arrivals_.add(event->type == SND_SEQ_EVENT_NOTEON ? 1 : 0);
  }
}

}  // namespace midikit::bench

#include "bench/MIDIKitIO/PlainSequencer.hpp"

namespace midikit::bench {
namespace {

constexpr std::uint8_t velocity = 100;
/// What ends the listening thread: an event that nobody sends as MIDI.
constexpr snd_seq_event_type_t goodbye = SND_SEQ_EVENT_USR0;
constexpr unsigned portType = SND_SEQ_PORT_TYPE_MIDI_GENERIC | SND_SEQ_PORT_TYPE_APPLICATION;

}  // namespace

PlainSequencer::PlainSequencer(Arrivals& arrivals) : arrivals_(arrivals) {
  isThere_ = open();
  if (isThere_) {
    thread_ = std::jthread([this] { listen(); });
  }
}

bool PlainSequencer::open() {
  if (snd_seq_open(&sender_, "hw", SND_SEQ_OPEN_DUPLEX, 0) < 0 ||
      snd_seq_open(&listener_, "hw", SND_SEQ_OPEN_INPUT, 0) < 0) {
    return false;
  }
  const int port = snd_seq_create_simple_port(listener_, inputName,
                                              SND_SEQ_PORT_CAP_WRITE | SND_SEQ_PORT_CAP_SUBS_WRITE, portType);
  input_ = {.client = static_cast<unsigned char>(snd_seq_client_id(listener_)),
            .port = static_cast<unsigned char>(port)};
  return port >= 0;
}

PlainSequencer::~PlainSequencer() {
  if (thread_.joinable()) {
    snd_seq_event_t event{};
    event.type = goodbye;
    output(event, connectTo(input_));
    thread_.join();
  }
  for (snd_seq_t* handle : {sender_, listener_}) {
    if (handle != nullptr) {
      snd_seq_close(handle);
    }
  }
}

std::optional<snd_seq_addr_t> PlainSequencer::find(const std::string& portName) const {
  snd_seq_client_info_t* client = nullptr;
  snd_seq_port_info_t* port = nullptr;
  snd_seq_client_info_alloca(&client);
  snd_seq_port_info_alloca(&port);
  snd_seq_client_info_set_client(client, -1);
  while (snd_seq_query_next_client(sender_, client) >= 0) {
    snd_seq_port_info_set_client(port, snd_seq_client_info_get_client(client));
    snd_seq_port_info_set_port(port, -1);
    while (snd_seq_query_next_port(sender_, port) >= 0) {
      if (snd_seq_port_info_get_name(port) == portName) {
        return *snd_seq_port_info_get_addr(port);
      }
    }
  }
  return std::nullopt;
}

int PlainSequencer::connectTo(snd_seq_addr_t destination) {
  const int port = snd_seq_create_simple_port(sender_, "bench plain output", SND_SEQ_PORT_CAP_READ, portType);
  return snd_seq_connect_to(sender_, port, destination.client, destination.port) < 0 ? -1 : port;
}

void PlainSequencer::send(int port, std::uint8_t note) {
  snd_seq_event_t event{};
  event.type = SND_SEQ_EVENT_NOTEON;
  event.data.note.note = note;
  event.data.note.velocity = velocity;
  output(event, port);
}

void PlainSequencer::output(snd_seq_event_t& event, int port) {
  snd_seq_ev_set_source(&event, static_cast<unsigned char>(port));
  snd_seq_ev_set_subs(&event);
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

#include "tests/kernel/SequencerPeer.hpp"

#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <stdexcept>
#include <thread>

namespace midikit::io {

using namespace std::chrono_literals;

namespace {

constexpr unsigned midi = SND_SEQ_PORT_TYPE_MIDI_GENERIC | SND_SEQ_PORT_TYPE_APPLICATION;

int checked(int result, const char* what) {
  if (result < 0) {
    throw std::runtime_error(std::string(what) + ": " + snd_strerror(result));
  }
  return result;
}

snd_seq_event_t noteOn(std::uint8_t key) {
  snd_seq_event_t event{};
  event.type = SND_SEQ_EVENT_NOTEON;
  event.data.note.note = key;
  event.data.note.velocity = 100;
  return event;
}

}  // namespace

SequencerPeer::SequencerPeer(const std::string& name, Room room) {
  checked(snd_seq_open(&handle_, "hw", SND_SEQ_OPEN_DUPLEX, SND_SEQ_NONBLOCK), "open");
  snd_seq_set_client_name(handle_, name.c_str());
  if (room == Room::most) {
    snd_seq_set_client_pool_input(handle_, 2000);
  }
}

SequencerPeer::~SequencerPeer() {
  snd_seq_close(handle_);
}

int SequencerPeer::client() const {
  return snd_seq_client_id(handle_);
}

int SequencerPeer::addPort(const std::string& name, unsigned capabilities) {
  return checked(snd_seq_create_simple_port(handle_, name.c_str(), capabilities, midi), "port");
}

int SequencerPeer::addSource(const std::string& name) {
  return addPort(name, SND_SEQ_PORT_CAP_READ | SND_SEQ_PORT_CAP_SUBS_READ);
}

int SequencerPeer::addDestination(const std::string& name) {
  return addPort(name, SND_SEQ_PORT_CAP_WRITE | SND_SEQ_PORT_CAP_SUBS_WRITE);
}

void SequencerPeer::removePort(int port) {
  snd_seq_delete_simple_port(handle_, port);
}

std::optional<SequencerPeer::Address> SequencerPeer::find(const std::string& portName) {
  snd_seq_client_info_t* client = nullptr;
  snd_seq_client_info_alloca(&client);
  snd_seq_port_info_t* port = nullptr;
  snd_seq_port_info_alloca(&port);
  snd_seq_client_info_set_client(client, -1);
  while (snd_seq_query_next_client(handle_, client) >= 0) {
    snd_seq_port_info_set_client(port, snd_seq_client_info_get_client(client));
    snd_seq_port_info_set_port(port, -1);
    while (snd_seq_query_next_port(handle_, port) >= 0) {
      if (snd_seq_port_info_get_name(port) == portName) {
        return Address{snd_seq_port_info_get_client(port), snd_seq_port_info_get_port(port)};
      }
    }
  }
  return std::nullopt;
}

void SequencerPeer::connectFrom(int port, Address source) {
  checked(snd_seq_connect_from(handle_, port, source.first, source.second), "connect from");
}

void SequencerPeer::connectTo(int port, Address destination) {
  checked(snd_seq_connect_to(handle_, port, destination.first, destination.second), "connect to");
}

void SequencerPeer::send(snd_seq_event_t& event, int port) {
  snd_seq_ev_set_source(&event, static_cast<unsigned char>(port));
  snd_seq_ev_set_direct(&event);
  int result = -EAGAIN;
  for (int tries = 0; tries < 2000 && (result == -EAGAIN || result == -ENOMEM); ++tries) {
    result = snd_seq_event_output_direct(handle_, &event);
    if (result < 0) {
      std::this_thread::sleep_for(1ms);
    }
  }
  checked(result, "send");
}

void SequencerPeer::sendNote(int port, std::uint8_t key) {
  auto event = noteOn(key);
  snd_seq_ev_set_subs(&event);
  send(event, port);
}

void SequencerPeer::sendNoteTo(int port, Address destination, std::uint8_t key) {
  auto event = noteOn(key);
  snd_seq_ev_set_dest(&event, static_cast<unsigned char>(destination.first),
                      static_cast<unsigned char>(destination.second));
  send(event, port);
}

void SequencerPeer::sendSysEx(int port, std::span<const std::uint8_t> bytes) {
  std::vector<std::uint8_t> copy(bytes.begin(), bytes.end());
  for (std::size_t done = 0; done < copy.size(); done += 256) {
    snd_seq_event_t event{};
    const auto piece = std::min<std::size_t>(256, copy.size() - done);
    event.type = SND_SEQ_EVENT_SYSEX;
    event.flags = SND_SEQ_EVENT_LENGTH_VARIABLE;
    event.data.ext.len = static_cast<unsigned>(piece);
    event.data.ext.ptr = copy.data() + done;
    snd_seq_ev_set_subs(&event);
    send(event, port);
    std::this_thread::sleep_for(1ms);  // At the pace of a fast device.
  }
}

std::vector<std::uint8_t> SequencerPeer::read(std::size_t count) {
  std::vector<std::uint8_t> bytes;
  snd_midi_event_t* coder = nullptr;
  checked(snd_midi_event_new(65536, &coder), "coder");
  snd_midi_event_no_status(coder, 1);
  std::vector<std::uint8_t> piece(65536);
  while (bytes.size() < count) {
    pollfd watched{};
    snd_seq_poll_descriptors(handle_, &watched, 1, POLLIN);
    if (snd_seq_event_input_pending(handle_, 0) <= 0 && ::poll(&watched, 1, 1000) <= 0) {
      break;
    }
    snd_seq_event_t* event = nullptr;
    if (snd_seq_event_input(handle_, &event) < 0 || event == nullptr) {
      continue;
    }
    const long length = snd_midi_event_decode(coder, piece.data(), static_cast<long>(piece.size()), event);
    if (length > 0) {
      bytes.insert(bytes.end(), piece.begin(), piece.begin() + length);
    }
  }
  snd_midi_event_free(coder);
  return bytes;
}

}  // namespace midikit::io

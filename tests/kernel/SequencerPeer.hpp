#pragma once

#include <alsa/asoundlib.h>

#include <chrono>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace midikit::io {

/// Another program on the sequencer, written against the library alone.
class SequencerPeer {
 public:
  using Address = std::pair<int, int>;

  /// How many events the peer has room for that it hasn't read: the most there can be, or the usual number.
  enum class Room { most, usual };

  explicit SequencerPeer(const std::string& name, Room room = Room::most);
  ~SequencerPeer();
  SequencerPeer(const SequencerPeer&) = delete;
  SequencerPeer& operator=(const SequencerPeer&) = delete;

  int client() const;
  int addPort(const std::string& name, unsigned capabilities);
  int addSource(const std::string& name);
  int addDestination(const std::string& name);
  void removePort(int port);

  /// The port of that name of another client; none if there isn't one.
  std::optional<Address> find(const std::string& portName);
  void connectFrom(int port, Address source);
  void connectTo(int port, Address destination);

  /// To whoever listens to the port. Waits while there is no room.
  void sendNote(int port, std::uint8_t key);
  void sendSysEx(int port, std::span<const std::uint8_t> bytes);
  /// To that place alone.
  void sendNoteTo(int port, Address destination, std::uint8_t key);

  /// The bytes that come until there are `count` of them, or until nothing more has come for a second.
  std::vector<std::uint8_t> read(std::size_t count);

 private:
  void send(snd_seq_event_t& event, int port);

  snd_seq_t* handle_ = nullptr;
};

}  // namespace midikit::io

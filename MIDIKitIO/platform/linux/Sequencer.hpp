#pragma once

#include <alsa/asoundlib.h>

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "MIDIKitIO/platform/linux/EquipmentTree.hpp"
#include "foundation/Clock.hpp"

namespace midikit::io::alsa {

/// This program's client of the kernel's sequencer, with one port that hears and one that speaks, which
/// nobody else may use, and a port for each of its virtual endpoints. All operations but input() may be
/// called on any thread; input() on one at a time.
class Sequencer {
 public:
  enum class Direction { source, destination };

  /// None if there is no sequencer that may be used; `reason` tells why.
  static std::unique_ptr<Sequencer> open(std::string& reason);
  ~Sequencer();
  Sequencer(const Sequencer&) = delete;
  Sequencer& operator=(const Sequencer&) = delete;

  int client() const { return client_; }
  /// Where what comes from the sources that are listened to arrives, and the news of the system.
  PortAddress ear() const { return {client_, ear_}; }
  /// Readable when input() has something.
  int descriptor() const;

  /// What there is on the sequencer at this moment.
  std::vector<SequencerClient> clients() const;

  /// The name under which other programs see this one; cut to what the kernel takes.
  void setName(const std::string& name);
  /// A port that other programs see: a source is what they can listen to. None if there is no room for it.
  std::optional<int> addPort(const std::string& name, Direction direction);
  void renamePort(int port, const std::string& name);
  void removePort(int port);
  /// Who listens to a port of this program's.
  std::vector<PortAddress> listeners(int port) const;

  /// The sources that this program listens to.
  std::set<PortAddress> heard() const;
  /// Both give a negative error number on failure.
  int listen(PortAddress source);
  int stopListening(PortAddress source);
  /// Makes a destination ready for output: a device is opened by that. Harmless if it is.
  int prepare(PortAddress destination);

  /// Sends one event at once; or, with a `delay`, after it. From the port `from` of this program, or from the
  /// one that speaks. Gives a negative error number on failure: -EAGAIN or -ENOMEM while there is no room.
  int send(snd_seq_event_t& event, PortAddress to, std::optional<int> from,
           std::optional<karvex::foundation::Duration> delay);

  /// Takes what has come, at most `most` events. The sink's event is valid during the call alone. What was
  /// lost because it came too fast is one call with null. False if the sequencer has gone.
  bool input(std::size_t most, const std::function<void(const snd_seq_event_t*)>& sink);

 private:
  explicit Sequencer(snd_seq_t* handle) : handle_(handle) {}
  bool setUp();
  bool hasRoomFor(const snd_seq_event_t& event, int client) const;

  snd_seq_t* handle_;
  int client_ = -1;
  int ear_ = -1;
  int mouth_ = -1;
  int queue_ = -1;
  mutable std::mutex mutex_;  ///< for what shares the handle's scratch memory: output, and walks
};

}  // namespace midikit::io::alsa

#pragma once

#include <alsa/asoundlib.h>

#include <array>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "MIDIKitIO/platform/linux/EquipmentTree.hpp"
#include "MIDIKitIO/platform/linux/EventSink.hpp"

namespace midikit::io::alsa {

/// This program's client of the kernel's sequencer, with one port that hears, which
/// nobody else may use, and a port for each of its virtual endpoints. All operations but input() may be
/// called on any thread; input() on one at a time.
class Sequencer final : public EventSink, public std::enable_shared_from_this<Sequencer> {
 public:
  enum class Direction { source, destination };

  /// Why there is no sequencer to be had.
  struct Unavailable {
    enum class Reason {
      absent,     ///< the kernel has none, or not yet
      forbidden,  ///< it isn't this user's to use
      exhausted,  ///< it has no client, port or queue left
    };
    Reason reason;
    std::string text;  ///< for people
  };

  /// Null if there is no sequencer that may be used; `why` is set then.
  static std::shared_ptr<Sequencer> open(std::optional<Unavailable>& why);
  ~Sequencer() override;
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
  /// Who listens to a port of this program's.
  std::vector<PortAddress> listeners(int port) const;

  /// The sources that this program listens to.
  std::set<PortAddress> heard() const;
  /// Both give a negative error number on failure.
  int listen(PortAddress source);
  int stopListening(PortAddress source);
  /// Connects ports of others, for as long as both are there: this program isn't needed. Both return a
  /// negative error number on failure; connecting what is connected is none.
  int connectOthers(PortAddress source, PortAddress destination);
  int disconnectOthers(PortAddress source, PortAddress destination);

  std::optional<int> makePort() override;
  void removePort(int port) override;
  int connect(const Wire& wire) override;
  bool isConnected(const Wire& wire) const override;
  int send(snd_seq_event_t& event, const Wire& wire, const Moment& moment) override;
  QueueHold queue() override;

  /// Takes what has come, at most `most` events. The sink's event is valid during the call alone. What was
  /// lost because it came too fast is one call with null. False if the sequencer has gone.
  bool input(std::size_t most, const std::function<void(const snd_seq_event_t*)>& sink);

 private:
  struct RunningQueue;

  explicit Sequencer(snd_seq_t* handle) : handle_(handle) {}
  bool setUp();
  bool hasConnection(PortAddress source, PortAddress destination) const;
  bool takeRoom(const snd_seq_event_t& event, int client, karvex::foundation::TimePoint now);
  void endQueue(int number);

  snd_seq_t* handle_;
  int client_ = -1;
  int ear_ = -1;
  std::mutex mutex_;                ///< of all below, and of the handle's buffer for output
  std::weak_ptr<const int> queue_;  ///< the one that runs
  /// What is known of the room at a client, by its number.
  struct Room {
    int cells = 0;
    karvex::foundation::TimePoint until{};
  };
  std::array<Room, 256> known_{};
};

}  // namespace midikit::io::alsa

#pragma once

#include <atomic>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "MIDIKitIO/platform/MIDIThruConnectionParams.hpp"

namespace midikit::io::engine {

/// A thru connection. In one with an owner, endpoints are recognised by their unique ID alone.
struct ThruConnection {
  MIDIObjectRef ref = 0;
  MIDIThruConnectionParams parameters;
};

/// Where thru connections with an owner live. It outlasts the services that are made with it, so that what
/// one of them made is there in the next. All operations may be called on any thread.
class ThruConnectionStore {
 public:
  /// One connection as it outlives the program.
  struct Stored {
    std::string owner;
    MIDIThruConnectionParams parameters;

    friend bool operator==(const Stored& left, const Stored& right);
  };
  using Edit = std::function<void(std::vector<Stored>&)>;
  /// Makes an edit to all that is kept, whichever program has made it, and returns what is kept then. Called
  /// on the thread that makes the change, one call at a time. It must not use the store.
  using Keeper = std::function<std::vector<Stored>(const Edit&)>;
  using Observer = std::function<void()>;

  /// A store that begins empty and keeps nothing beyond its own life.
  ThruConnectionStore() = default;
  /// A store of what the keeper has.
  explicit ThruConnectionStore(Keeper keeper);

  /// The references of stored connections come from above all that services hand out themselves.
  MIDIObjectRef add(const std::string& owner, const MIDIThruConnectionParams& parameters);
  /// False if there is none.
  bool remove(MIDIObjectRef connection);
  /// The owner's, in the order in which they were made.
  std::vector<MIDIObjectRef> ownedBy(const std::string& owner) const;
  /// Everybody's, in the order in which they were made.
  std::vector<ThruConnection> all() const;

  /// Takes over what other programs have changed. What is still there keeps its reference.
  void reload();

  /// Whether this program is the one of all those that share the connections that forwards between endpoints
  /// that each of them sees. True unless set otherwise.
  bool isForwarding() const { return isForwarding_; }
  void setForwarding(bool isForwarding);

  /// Calls the observer after changes that come from outside: reload(), setForwarding(). The result ends it:
  /// it isn't called, and isn't running, once that has been called.
  [[nodiscard]] std::function<void()> observe(Observer observer);

 private:
  bool adopt(std::vector<Stored> kept);
  void tellObservers();

  mutable std::mutex mutex_;
  MIDIObjectRef last_ = 0x40000000;
  std::map<MIDIObjectRef, Stored> connections_;
  Keeper keeper_;
  std::atomic<bool> isForwarding_ = true;
  std::mutex observersMutex_;  ///< held while they are called
  int lastObserver_ = 0;
  std::map<int, Observer> observers_;
};

}  // namespace midikit::io::engine

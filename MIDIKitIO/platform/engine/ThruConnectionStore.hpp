#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "MIDIKitIO/platform/MIDIThruConnectionParams.hpp"

namespace midikit::io::engine {

/// A thru connection. In one with an owner, endpoints are told by their unique ID alone.
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
  };
  /// Gets all that is stored after each change, on the thread that changes it, one call at a time. It must
  /// not use the store.
  using Keeper = std::function<void(const std::vector<Stored>&)>;

  /// A store that begins empty and keeps nothing beyond its own life.
  ThruConnectionStore() = default;
  /// A store that begins with these and hands what is in it to the keeper.
  ThruConnectionStore(const std::vector<Stored>& kept, Keeper keeper);

  /// The references of stored connections come from above all that services hand out themselves.
  MIDIObjectRef add(const std::string& owner, const MIDIThruConnectionParams& parameters);
  /// False if there is none.
  bool remove(MIDIObjectRef connection);
  /// The owner's, in the order in which they were made.
  std::vector<MIDIObjectRef> ownedBy(const std::string& owner) const;
  /// Everybody's, in the order in which they were made.
  std::vector<ThruConnection> all() const;

 private:
  void keep() const;

  mutable std::mutex mutex_;
  MIDIObjectRef last_ = 0x40000000;
  std::map<MIDIObjectRef, Stored> connections_;
  Keeper keeper_;
};

}  // namespace midikit::io::engine

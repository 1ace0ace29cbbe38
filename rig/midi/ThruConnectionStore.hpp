#pragma once

#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "MIDIKitIO/platform/MIDIThruConnectionParams.hpp"

namespace karvex::rig {

/// A thru connection. In one with an owner, endpoints are told by their unique ID alone.
struct ThruConnection {
  midikit::io::MIDIObjectRef ref = 0;
  midikit::io::MIDIThruConnectionParams parameters;
};

/// Where thru connections with an owner live. It outlasts the services that are made with it, so that what
/// one of them made is there in the next. All operations may be called on any thread.
class ThruConnectionStore {
 public:
  /// The references of stored connections come from above all that services hand out themselves.
  midikit::io::MIDIObjectRef add(const std::string& owner,
                                 const midikit::io::MIDIThruConnectionParams& parameters);
  /// False if there is none.
  bool remove(midikit::io::MIDIObjectRef connection);
  /// The owner's, in the order in which they were made.
  std::vector<midikit::io::MIDIObjectRef> ownedBy(const std::string& owner) const;
  /// Everybody's, in the order in which they were made.
  std::vector<ThruConnection> all() const;

 private:
  struct Stored {
    std::string owner;
    midikit::io::MIDIThruConnectionParams parameters;
  };

  mutable std::mutex mutex_;
  midikit::io::MIDIObjectRef last_ = 0x40000000;
  std::map<midikit::io::MIDIObjectRef, Stored> connections_;
};

}  // namespace karvex::rig

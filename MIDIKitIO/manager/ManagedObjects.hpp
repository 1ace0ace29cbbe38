#pragma once

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "MIDIKitIO/manager/MIDIManaged.hpp"
#include "MIDIKitIO/manager/ManagedType.hpp"
#include "MIDIKitInternals/ThreadSafeAccess.hpp"

namespace midikit::io {

/// The objects that a manager holds, by kind and tag. All operations may be called on any thread; no object
/// is used or destroyed under the lock.
class ManagedObjects {
 public:
  using Endpoints = std::map<std::string, std::shared_ptr<MIDIManagedEndpoint>>;
  using Connections = std::map<std::string, std::shared_ptr<MIDIManagedConnection>>;

  struct Maps {
    Connections inputConnections;
    Connections outputConnections;
    Endpoints inputs;
    Endpoints outputs;
    Connections thruConnections;  ///< non-persistent ones alone
  };

  /// Lets go of the kinds in the order of ManagedType.
  ~ManagedObjects();
  ManagedObjects() = default;
  ManagedObjects(const ManagedObjects&) = delete;
  ManagedObjects& operator=(const ManagedObjects&) = delete;

  /// A copy of one of the maps, for example `get(&Maps::inputs)`.
  template <class Map>
  Map get(Map Maps::* map) const {
    return maps_.modify([map](const Maps& maps) { return maps.*map; });
  }

  /// Puts the object under the tag, and lets go of the one that stood there.
  template <class Map>
  void put(Map Maps::* map, const std::string& tag, typename Map::mapped_type object) {
    maps_.modify([&](Maps& maps) { std::swap((maps.*map)[tag], object); });
  }

  /// Lets go of the objects that are meant. A tag that isn't there is no error.
  void remove(ManagedType type, const TagSelection& selection);

  /// All connections in the order in which they follow a change: output connections, input connections, thru
  /// connections, each in the order of the tags.
  std::vector<std::shared_ptr<MIDIManagedConnection>> followers() const;

 private:
  template <class Map>
  void remove(Map Maps::* map, const TagSelection& selection);

  mutable internals::ThreadSafeAccess<Maps> maps_;
};

}  // namespace midikit::io

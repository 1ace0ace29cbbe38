#pragma once

#include <map>
#include <memory>
#include <string>
#include <utility>

#include "MIDIKitIO/manager/MIDIIORawNotification.hpp"
#include "MIDIKitIO/manager/ManagedType.hpp"
#include "MIDIKitIO/ports/MIDIInput.hpp"
#include "MIDIKitIO/ports/MIDIInputConnection.hpp"
#include "MIDIKitIO/ports/MIDIOutput.hpp"
#include "MIDIKitIO/ports/MIDIOutputConnection.hpp"
#include "MIDIKitIO/thru/MIDIThruConnection.hpp"
#include "MIDIKitInternals/ThreadSafeAccess.hpp"

namespace midikit::io {

/// The objects that a manager holds, by kind and tag. What it lets go of is disposed at once, also if others
/// hold it. All operations may be called on any thread; no object is used or destroyed under the lock.
class ManagedObjects {
 public:
  template <class Object>
  using ByTag = std::map<std::string, std::shared_ptr<Object>>;

  struct Maps {
    ByTag<MIDIInputConnection> inputConnections;
    ByTag<MIDIOutputConnection> outputConnections;
    ByTag<MIDIInput> inputs;
    ByTag<MIDIOutput> outputs;
    ByTag<MIDIThruConnection> thruConnections;  ///< non-persistent ones alone
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
    if (object) {
      object->dispose();
    }
  }

  /// Lets go of the objects that are meant. A tag that isn't there is no error.
  void remove(ManagedType type, const TagSelection& selection);

  /// Lets all connections follow a change, on the calling thread: output connections, input connections, thru
  /// connections, each in the order of the tags.
  void follow(const MIDIIORawNotification& change) const;

 private:
  template <class Map>
  void remove(Map Maps::* map, const TagSelection& selection);

  mutable internals::ThreadSafeAccess<Maps> maps_;
};

}  // namespace midikit::io

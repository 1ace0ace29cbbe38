#pragma once

#include <map>
#include <memory>
#include <string>
#include <utility>

#include "MIDIKitIO/manager/MIDIIORawNotification.hpp"
#include "MIDIKitIO/manager/ManagedType.hpp"
#include "MIDIKitIO/manager/OwnershipGate.hpp"
#include "MIDIKitIO/ports/MIDIInput.hpp"
#include "MIDIKitIO/ports/MIDIInputConnection.hpp"
#include "MIDIKitIO/ports/MIDIOutput.hpp"
#include "MIDIKitIO/ports/MIDIOutputConnection.hpp"
#include "MIDIKitIO/thru/MIDIThruConnection.hpp"
#include "MIDIKitInternals/ThreadSafeAccess.hpp"

namespace midikit::io {

/// The objects that a manager holds, by kind and tag. What it lets go of is disposed first, also if others
/// hold it. Changes are made on eventQueue; all else may be called on any thread. No object is used or
/// destroyed under the lock.
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

  /// The runtime must outlive the objects.
  explicit ManagedObjects(karvex::foundation::Runtime& runtime) : ownership_(runtime) {}
  /// Lets go of the kinds in the order of ManagedType.
  ~ManagedObjects();
  ManagedObjects(const ManagedObjects&) = delete;
  ManagedObjects& operator=(const ManagedObjects&) = delete;

  /// A copy of one of the maps, for example `get(&Maps::inputs)`.
  template <class Map>
  Map get(Map Maps::* map) const {
    return maps_.modify([map](const Maps& maps) { return maps.*map; });
  }

  /// Lets go of the object under the tag, if there is one, and puts this one there.
  template <class Map>
  void put(Map Maps::* map, const std::string& tag, typename Map::mapped_type object) {
    const auto present = get(map);
    if (const auto old = present.find(tag); old != present.end()) {
      old->second->dispose();
    }
    ownership_.change([&] { maps_.modify([&](Maps& maps) { std::swap((maps.*map)[tag], object); }); });
  }

  /// Lets go of the objects that are meant. A tag that isn't there is no error.
  void remove(ManagedType type, const TagSelection& selection);

  /// Lets all connections follow a change, on the calling thread: output connections, input connections, thru
  /// connections, each in the order of the tags.
  void follow(const MIDIIORawNotification& change) const;

  /// Where endpoints of the program's own are made, and where those who ask for them wait.
  OwnershipGate& ownership() { return ownership_; }
  const OwnershipGate& ownership() const { return ownership_; }

 private:
  template <class Map>
  void remove(Map Maps::* map, const TagSelection& selection);

  OwnershipGate ownership_;
  mutable internals::ThreadSafeAccess<Maps> maps_;
};

}  // namespace midikit::io

#include "MIDIKitIO/manager/ManagedObjects.hpp"

namespace midikit::io {

ManagedObjects::~ManagedObjects() {
  for (const auto type : allManagedTypes) {
    remove(type, TagSelection::all());
  }
}

void ManagedObjects::remove(ManagedType type, const TagSelection& selection) {
  switch (type) {
    case ManagedType::inputConnection:
      return remove(&Maps::inputConnections, selection);
    case ManagedType::outputConnection:
      return remove(&Maps::outputConnections, selection);
    case ManagedType::input:
      return remove(&Maps::inputs, selection);
    case ManagedType::output:
      return remove(&Maps::outputs, selection);
    case ManagedType::nonPersistentThruConnection:
      return remove(&Maps::thruConnections, selection);
  }
}

template <class Map>
void ManagedObjects::remove(Map Maps::* map, const TagSelection& selection) {
  Map removed;
  maps_.modify([&](Maps& maps) {
    if (const auto& tag = selection.tag()) {
      removed.insert((maps.*map).extract(*tag));
    } else {
      removed.swap(maps.*map);
    }
  });
  for (const auto& [tag, object] : removed) {
    object->dispose();
  }
}

void ManagedObjects::follow(const MIDIIORawNotification& change) const {
  const auto followAll = [&change](const auto& connections) {
    for (const auto& [tag, connection] : connections) {
      connection->follow(change);
    }
  };
  followAll(get(&Maps::outputConnections));
  followAll(get(&Maps::inputConnections));
  followAll(get(&Maps::thruConnections));
}

}  // namespace midikit::io

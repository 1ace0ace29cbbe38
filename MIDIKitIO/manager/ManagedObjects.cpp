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
  for (const auto& [tag, object] : get(map)) {
    if (selection.tag().value_or(tag) == tag) {
      object->dispose();
      removed.emplace(tag, object);
    }
  }
  ownership_.change([&] {
    maps_.modify([&](Maps& maps) {
      for (const auto& [tag, object] : removed) {
        (maps.*map).erase(tag);
      }
    });
  });
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

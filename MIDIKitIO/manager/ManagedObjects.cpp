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
  Map removed;  // Destroyed behind the lock: the objects ask the platform.
  maps_.modify([&](Maps& maps) {
    if (const auto& tag = selection.tag()) {
      removed.insert((maps.*map).extract(*tag));
    } else {
      removed.swap(maps.*map);
    }
  });
}

std::vector<std::shared_ptr<MIDIManagedConnection>> ManagedObjects::followers() const {
  return maps_.modify([](const Maps& maps) {
    std::vector<std::shared_ptr<MIDIManagedConnection>> all;
    for (const auto* map : {&maps.outputConnections, &maps.inputConnections, &maps.thruConnections}) {
      for (const auto& [tag, connection] : *map) {
        all.push_back(connection);
      }
    }
    return all;
  });
}

}  // namespace midikit::io

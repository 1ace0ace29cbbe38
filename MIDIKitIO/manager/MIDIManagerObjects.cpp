#include <cstring>
#include <type_traits>

#include "MIDIKitCore/MIDIIOError.hpp"
#include "MIDIKitIO/manager/MIDIManager.hpp"

/// What the manager makes, holds and lets go of.
namespace midikit::io {

using Maps = ManagedObjects::Maps;

template <class Map, class Settings>
void MIDIManager::addEndpoint(Map Maps::* map, const Settings& settings) {
  using Endpoint = typename Map::mapped_type::element_type;
  onEventQueue([&] {
    const auto kept = settings.persistence.read();
    const auto endpoint = std::make_shared<Endpoint>(shared_from_this(), settings, kept);
    managed_.put(map, settings.tag, endpoint);
    managed_.ownership().change([&] { endpoint->create(*this); });
    const auto uniqueID = endpoint->uniqueID();
    if (!uniqueID) {
      throw core::MIDIIOError::connectionError("Could not read virtual MIDI endpoint unique ID.");
    }
    settings.persistence.store(uniqueID);
  });
}

void MIDIManager::addInput(const MIDIInputSettings& settings) {
  addEndpoint(&Maps::inputs, settings);
}

void MIDIManager::addOutput(const MIDIOutputSettings& settings) {
  addEndpoint(&Maps::outputs, settings);
}

void MIDIManager::addInputConnection(const MIDIInputConnectionSettings& settings) {
  onEventQueue([&] {
    const auto connection =
        std::make_shared<MIDIInputConnection>(shared_from_this(), preferredAPI(), settings);
    managed_.put(&Maps::inputConnections, settings.tag, connection);
    connection->catchUp();
    connection->listen();
    connection->connect();
  });
}

void MIDIManager::addOutputConnection(const MIDIOutputConnectionSettings& settings) {
  onEventQueue([&] {
    const auto connection =
        std::make_shared<MIDIOutputConnection>(shared_from_this(), preferredAPI(), settings);
    managed_.put(&Maps::outputConnections, settings.tag, connection);
    connection->catchUp();
    connection->create();
    connection->resolve();
  });
}

void MIDIManager::addThruConnection(const MIDIThruConnectionSettings& settings) {
  onEventQueue([&] {
    const auto connection = std::make_shared<MIDIThruConnection>(shared_from_this(), settings);
    if (!settings.lifecycle.ownerID()) {
      managed_.put(&Maps::thruConnections, settings.tag, connection);
    }
    connection->create();
  });
}

void MIDIManager::remove(ManagedType type, const TagSelection& selection) {
  onEventQueue([&] { managed_.remove(type, selection); });
}

void MIDIManager::removeAll() {
  for (const auto type : allManagedTypes) {
    remove(type, TagSelection::all());
  }
}

std::vector<MIDIObjectRef> MIDIManager::persistentThruConnections(const std::string& ownerID) const {
  std::vector<std::uint8_t> bytes;
  core::checkStatus(service()->MIDIThruConnectionFind(ownerID, bytes));
  std::vector<MIDIObjectRef> references(bytes.size() / sizeof(MIDIObjectRef));
  if (!references.empty()) {
    std::memcpy(references.data(), bytes.data(), references.size() * sizeof(MIDIObjectRef));
  }
  return references;
}

std::size_t MIDIManager::disposePersistentThruConnections(const std::string& ownerID) {
  std::size_t disposed = 0;
  for (const auto connection : persistentThruConnections(ownerID)) {
    if (service()->MIDIThruConnectionDispose(connection) == noErr) {
      ++disposed;
    }
  }
  return disposed;
}

ManagedObjects::ByTag<MIDIInputConnection> MIDIManager::managedInputConnections() const {
  return managed_.get(&Maps::inputConnections);
}

ManagedObjects::ByTag<MIDIOutputConnection> MIDIManager::managedOutputConnections() const {
  return managed_.get(&Maps::outputConnections);
}

ManagedObjects::ByTag<MIDIInput> MIDIManager::managedInputs() const {
  return managed_.get(&Maps::inputs);
}

ManagedObjects::ByTag<MIDIOutput> MIDIManager::managedOutputs() const {
  return managed_.get(&Maps::outputs);
}

ManagedObjects::ByTag<MIDIThruConnection> MIDIManager::managedThruConnections() const {
  return managed_.get(&Maps::thruConnections);
}

std::set<std::int32_t> MIDIManager::ownedUniqueIDs(MIDIEndpointType type) const {
  std::set<std::int32_t> owned;
  const auto addFrom = [&owned](const auto& objects) {
    for (const auto& [tag, object] : objects) {
      if (const auto uniqueID = object->uniqueID()) {
        owned.insert(*uniqueID);
      }
    }
  };
  ownership().look([&] {
    owned.clear();
    type == MIDIEndpointType::input ? addFrom(managedInputs()) : addFrom(managedOutputs());
  });
  return owned;
}

}  // namespace midikit::io

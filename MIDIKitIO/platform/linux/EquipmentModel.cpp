#include "MIDIKitIO/platform/linux/EquipmentModel.hpp"

#include <algorithm>
#include <string_view>
#include <utility>

#include "MIDIKitIO/platform/MIDIPropertyKeys.hpp"
#include "MIDIKitIO/platform/linux/DeviceMatch.hpp"

namespace midikit::io::alsa {

using engine::EntityDescription;
using engine::MIDIObjectKind;
using engine::SetupEditor;

namespace {

/// Tells what the equipment says differently than before. What it never said, as a property that a user has
/// set, and the unique ID stay as they are.
void tellDifferences(MIDIObjectRef object, const PropertyDictionary& before, const PropertyDictionary& now,
                     SetupEditor& editor) {
  for (const auto& [key, value] : now) {
    const auto former = before.find(key);
    if (key != kMIDIPropertyUniqueID && (former == before.end() || former->second != value)) {
      editor.setProperty(object, key, value);
    }
  }
}

void tellName(MIDIObjectRef object, const std::optional<std::string>& before,
              const std::optional<std::string>& now, SetupEditor& editor) {
  if (now && now != before) {
    editor.setProperty(object, kMIDIPropertyName, *now);
  }
}

}  // namespace

void EquipmentModel::update(const Equipment& equipment, SetupEditor& editor) {
  ++updates_;
  const auto matches = match(equipment.devices);
  for (std::size_t place = 0; place < devices_.size(); ++place) {
    if (devices_[place].client && std::ranges::find(matches, std::optional(place)) == matches.end()) {
      takeOffline(devices_[place], editor);
    }
  }
  for (std::size_t place = 0; place < matches.size(); ++place) {
    const auto& record = equipment.devices[place];
    if (matches[place]) {
      updateDevice(devices_[*matches[place]], record, editor);
    } else {
      addDevice(record, editor);
    }
  }
  forgetOldest(editor);
  updateEndpoints(equipment.endpoints, editor);
  readAddresses();
}

std::vector<std::optional<std::size_t>> EquipmentModel::match(
    const std::vector<DeviceRecord>& records) const {
  std::vector<KnownDevice> known;
  std::vector<KnownDevice> present;
  known.reserve(devices_.size());
  present.reserve(records.size());
  for (const auto& device : devices_) {
    known.push_back({device.client, device.keys});
  }
  for (const auto& record : records) {
    present.push_back({record.client, record.keys});
  }
  return matchDevices(known, present);
}

void EquipmentModel::takeOffline(Device& device, SetupEditor& editor) const {
  device.client.reset();
  device.left = updates_;
  editor.setPropertyThroughout(device.ref, kMIDIPropertyOffline, 1);
}

void EquipmentModel::updateDevice(Device& device, const DeviceRecord& record, SetupEditor& editor) {
  tellName(device.ref, device.description.name, record.description.name, editor);
  tellDifferences(device.ref, device.description.properties, record.description.properties, editor);
  for (const auto& [key, value] : record.description.sharedProperties) {
    const auto former = device.description.sharedProperties.find(key);
    if (former == device.description.sharedProperties.end() || former->second != value) {
      editor.setPropertyThroughout(device.ref, key, value);
    }
  }
  updateEntities(device, record, editor);
  if (!device.client) {
    editor.setPropertyThroughout(device.ref, kMIDIPropertyOffline, 0);
  }
  device.keys = record.keys;
  device.client = record.client;
  device.description = record.description;
}

void EquipmentModel::addDevice(const DeviceRecord& record, SetupEditor& editor) {
  Device device{.ref = editor.addDevice(record.description),
                .keys = record.keys,
                .client = record.client,
                .description = record.description};
  const auto& refs = editor.setup().find(device.ref)->entities;
  for (std::size_t place = 0; place < refs.size(); ++place) {
    device.entities.push_back(
        adopt(record.ports.at(place), record.description.entities.at(place), refs[place], editor));
  }
  devices_.push_back(std::move(device));
}

/// An entity whose port has gone, or changed its directions, goes; the others stay the objects that they are.
void EquipmentModel::updateEntities(Device& device, const DeviceRecord& record, SetupEditor& editor) {
  const auto& wanted = record.description.entities;
  const auto isGone = [&](const Entity& entity) {
    const auto place = std::ranges::find(record.ports, entity.port);
    if (place == record.ports.end()) {
      return true;
    }
    const auto& now = wanted.at(static_cast<std::size_t>(place - record.ports.begin()));
    return now.sources.empty() != (entity.source == 0) ||
           now.destinations.empty() != (entity.destination == 0);
  };
  for (const auto& entity : device.entities) {
    if (isGone(entity)) {
      editor.remove(entity.ref);
    }
  }
  std::erase_if(device.entities, isGone);
  for (std::size_t place = 0; place < wanted.size(); ++place) {
    const auto& now = wanted[place];
    const auto known = std::ranges::find(device.entities, record.ports.at(place), &Entity::port);
    if (known == device.entities.end()) {
      const Ref added = editor.addEntity(device.ref, now, record.description.sharedProperties);
      device.entities.push_back(adopt(record.ports.at(place), now, added, editor));
      continue;
    }
    tellName(known->ref, known->description.name, now.name, editor);
    for (const Ref endpoint : {known->source, known->destination}) {
      if (endpoint != 0) {
        tellName(endpoint, known->description.name, now.name, editor);
      }
    }
    known->description = now;
  }
}

EquipmentModel::Entity EquipmentModel::adopt(int port, const EntityDescription& description, Ref entity,
                                             SetupEditor& editor) const {
  const auto* object = editor.setup().find(entity);
  Entity adopted{.port = port, .ref = entity, .description = description};
  adopted.source = object->sources.empty() ? 0 : object->sources.front();
  adopted.destination = object->destinations.empty() ? 0 : object->destinations.front();
  if (adopted.destination != 0) {
    editor.setReader(adopted.destination, makeReceiver_(adopted.destination));
  }
  return adopted;
}

void EquipmentModel::forgetOldest(SetupEditor& editor) {
  const auto isOffline = [](const Device& device) { return !device.client; };
  while (static_cast<std::size_t>(std::ranges::count_if(devices_, isOffline)) > mostOffline) {
    const auto oldest = std::ranges::min_element(
        devices_, {}, [](const Device& device) { return std::pair(device.client.has_value(), device.left); });
    editor.remove(oldest->ref);
    devices_.erase(oldest);
  }
}

void EquipmentModel::updateEndpoints(const std::vector<EndpointRecord>& records, SetupEditor& editor) {
  std::map<EndpointKey, const EndpointRecord*> present;
  for (const auto& record : records) {
    present.emplace(EndpointKey{record.address, record.kind}, &record);
  }
  std::erase_if(endpoints_, [&](const auto& entry) {
    const auto now = present.find(entry.first);
    const bool isGone =
        now == present.end() || (entry.second.hasLeft && now->second->identity != entry.second.identity);
    if (isGone) {
      editor.remove(entry.second.ref);
    }
    return isGone;
  });
  for (const auto& [key, record] : present) {
    const auto [place, isNew] = endpoints_.try_emplace(key);
    Endpoint& endpoint = place->second;
    if (isNew) {
      endpoint.ref = editor.addForeignEndpoint(record->kind, record->description);
      if (record->kind == MIDIObjectKind::destination) {
        editor.setReader(endpoint.ref, makeReceiver_(endpoint.ref));
      }
    } else {
      tellName(endpoint.ref, endpoint.description.name, record->description.name, editor);
      tellDifferences(endpoint.ref, endpoint.description.properties, record->description.properties, editor);
    }
    endpoint.identity = record->identity;
    endpoint.hasLeft = false;
    endpoint.description = record->description;
  }
}

void EquipmentModel::leave(int client, std::optional<int> port) {
  const auto isThere = [&](PortAddress address) {
    return address.client == client && (!port || address.port == *port);
  };
  std::erase_if(sources_, [&](const auto& entry) { return isThere(entry.first); });
  std::erase_if(addresses_, [&](const auto& entry) { return isThere(entry.second); });
  for (auto& [key, endpoint] : endpoints_) {
    endpoint.hasLeft = endpoint.hasLeft || isThere(key.first);
  }
}

void EquipmentModel::readAddresses() {
  sources_.clear();
  addresses_.clear();
  const auto add = [this](PortAddress address, Ref source, Ref destination) {
    if (source != 0) {
      sources_.emplace(address, source);
      addresses_.emplace(source, address);
    }
    if (destination != 0) {
      addresses_.emplace(destination, address);
    }
  };
  for (const auto& device : devices_) {
    for (const auto& entity : device.entities) {
      if (device.client) {
        add({*device.client, entity.port}, entity.source, entity.destination);
      }
    }
  }
  for (const auto& [key, endpoint] : endpoints_) {
    const bool isSource = key.second == MIDIObjectKind::source;
    add(key.first, isSource ? endpoint.ref : 0, isSource ? 0 : endpoint.ref);
  }
}

MIDIObjectRef EquipmentModel::sourceAt(PortAddress address) const {
  const auto found = sources_.find(address);
  return found != sources_.end() ? found->second : 0;
}

std::optional<PortAddress> EquipmentModel::addressOf(Ref endpoint) const {
  const auto found = addresses_.find(endpoint);
  return found != addresses_.end() ? std::optional(found->second) : std::nullopt;
}

}  // namespace midikit::io::alsa

#include "MIDIKitIO/platform/engine/MIDISetup.hpp"

#include <algorithm>
#include <utility>

#include "MIDIKitIO/platform/MIDIPropertyKeys.hpp"

namespace midikit::io::engine {

/// What an object is made from.
struct MIDISetup::Making {
  MIDIObjectKind kind;
  MIDIObjectRef parent;
  const std::optional<std::string>& name;
  const PropertyDictionary& properties;
  const PropertyDictionary& sharedProperties;
};

MIDIObjectRef MIDISetup::addDevice(const DeviceDescription& description) {
  const Making making{MIDIObjectKind::device, 0, description.name, description.properties,
                      description.sharedProperties};
  const Ref device = make(making).ref;
  devices_.push_back(device);
  for (const auto& entity : description.entities) {
    addEntity(device, entity, description.sharedProperties);
  }
  return device;
}

MIDIObjectRef MIDISetup::addEntity(Ref device, const EntityDescription& description,
                                   const PropertyDictionary& shared) {
  const Ref entity =
      make({MIDIObjectKind::entity, device, description.name, description.properties, shared}).ref;
  objects_.at(device).entities.push_back(entity);
  for (const auto& source : description.sources) {
    const Ref made = make({MIDIObjectKind::source, entity, source.name, source.properties, shared}).ref;
    objects_.at(entity).sources.push_back(made);
    sources_.push_back(made);
  }
  for (const auto& destination : description.destinations) {
    const Ref made =
        make({MIDIObjectKind::destination, entity, destination.name, destination.properties, shared}).ref;
    objects_.at(entity).destinations.push_back(made);
    destinations_.push_back(made);
  }
  return entity;
}

MIDIObjectRef MIDISetup::addVirtualEndpoint(MIDIObjectKind kind, const std::string& name,
                                            MIDIProtocolID protocol) {
  PropertyDictionary properties;
  if (hasProtocols_) {
    properties.emplace(kMIDIPropertyProtocolID, static_cast<std::int32_t>(protocol));
  }
  MIDIObject& made = make({kind, 0, name, properties, {}});
  made.isOwn = true;
  (kind == MIDIObjectKind::source ? sources_ : destinations_).push_back(made.ref);
  return made.ref;
}

MIDIObjectRef MIDISetup::addForeignEndpoint(MIDIObjectKind kind, const EndpointDescription& description) {
  const Ref made = make({kind, 0, description.name, description.properties, {}}).ref;
  (kind == MIDIObjectKind::source ? sources_ : destinations_).push_back(made);
  return made;
}

MIDIObject& MIDISetup::make(const Making& making) {
  const Ref ref = references_.next();
  MIDIObject& object = objects_[ref];
  object.ref = ref;
  object.kind = making.kind;
  object.parent = making.parent;
  fill(object, making);
  return object;
}

/// Own properties win over shared ones, and both over the usual values.
void MIDISetup::fill(MIDIObject& object, const Making& making) {
  object.properties = making.properties;
  object.properties.insert(making.sharedProperties.begin(), making.sharedProperties.end());
  if (making.name) {
    object.properties.insert_or_assign(std::string(kMIDIPropertyName), *making.name);
  }
  const auto wanted = object.properties.extract(std::string(kMIDIPropertyUniqueID));
  const auto* id = wanted.empty() ? nullptr : std::get_if<std::int32_t>(&wanted.mapped());
  const bool isKept = id != nullptr && uniqueIds_.take(object.ref, *id);
  object.properties.insert_or_assign(std::string(kMIDIPropertyUniqueID),
                                     isKept ? *id : uniqueIds_.assign(object.ref));
  if (!object.isEndpoint()) {
    return;
  }
  if (hasProtocols_) {
    object.properties.try_emplace(std::string(kMIDIPropertyProtocolID),
                                  static_cast<std::int32_t>(MIDIProtocolID::midi1_0));
  }
  if (auto usual = usualDisplayName(object); !usual.empty()) {
    object.properties.try_emplace(std::string(kMIDIPropertyDisplayName), std::move(usual));
  }
}

void MIDISetup::remove(Ref object) {
  const auto* removed = find(object);
  if (removed == nullptr) {
    return;
  }
  if (const auto parent = objects_.find(removed->parent); parent != objects_.end()) {
    std::erase(parent->second.entities, object);
    std::erase(parent->second.sources, object);
    std::erase(parent->second.destinations, object);
  }
  for (const Ref gone : subtree(object)) {
    std::erase(devices_, gone);
    std::erase(sources_, gone);
    std::erase(destinations_, gone);
    uniqueIds_.release(gone);
    objects_.erase(gone);
  }
}

const MIDIObject* MIDISetup::find(Ref object) const {
  const auto found = objects_.find(object);
  return found != objects_.end() ? &found->second : nullptr;
}

MIDIObjectRef MIDISetup::endpointWithUniqueId(std::int32_t id) const {
  const auto* owner = find(uniqueIds_.owner(id));
  return owner != nullptr && owner->isEndpoint() ? owner->ref : 0;
}

std::vector<MIDIObjectRef> MIDISetup::subtree(Ref object) const {
  std::vector<Ref> all;
  if (const auto* root = find(object)) {
    all.push_back(object);
    for (const auto* children : {&root->entities, &root->sources, &root->destinations}) {
      for (const Ref child : *children) {
        const auto below = subtree(child);
        all.insert(all.end(), below.begin(), below.end());
      }
    }
  }
  return all;
}

}  // namespace midikit::io::engine

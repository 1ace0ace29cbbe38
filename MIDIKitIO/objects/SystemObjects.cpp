#include "MIDIKitIO/objects/SystemObjects.hpp"

#include <string>
#include <string_view>
#include <utility>

#include "MIDIKitIO/objects/ObjectList.hpp"
#include "MIDIKitIO/objects/PropertyAccess.hpp"

namespace midikit::io {
namespace {

std::string textOrEmpty(const MIDIService& service, MIDIObjectRef object, std::string_view key) {
  auto text = readTextProperty(service, object, key);
  return text ? *std::move(text) : std::string();
}

template <class Object>
Object makeObject(const MIDIService& service, MIDIObjectRef ref) {
  Object object;
  object.name = textOrEmpty(service, ref, kMIDIPropertyName);
  if constexpr (MIDIEndpoint<Object>) {
    object.displayName = textOrEmpty(service, ref, kMIDIPropertyDisplayName);
  }
  object.uniqueID = integerProperty(service, ref, kMIDIPropertyUniqueID);
  object.coreMIDIObjectRef = ref;
  return object;
}

template <class At>
std::optional<MIDIObjectRef> firstWithUniqueID(const MIDIService& service, std::int32_t uniqueID,
                                               std::size_t count, At at) {
  for (std::size_t index = 0; index < count; ++index) {
    const MIDIObjectRef ref = at(index);
    if (ref != 0 && integerProperty(service, ref, kMIDIPropertyUniqueID) == uniqueID) {
      return ref;
    }
  }
  return std::nullopt;
}

}  // namespace

std::vector<MIDIDevice> systemDevices(const MIDIService& service) {
  return listObjects(
      service.MIDIGetNumberOfDevices(), [&](std::size_t index) { return service.MIDIGetDevice(index); },
      [&](MIDIObjectRef ref) { return makeDevice(service, ref); });
}

std::vector<MIDIOutputEndpoint> systemSources(const MIDIService& service) {
  return listObjects(
      service.MIDIGetNumberOfSources(), [&](std::size_t index) { return service.MIDIGetSource(index); },
      [&](MIDIObjectRef ref) { return makeOutputEndpoint(service, ref); });
}

std::vector<MIDIInputEndpoint> systemDestinations(const MIDIService& service) {
  return listObjects(
      service.MIDIGetNumberOfDestinations(),
      [&](std::size_t index) { return service.MIDIGetDestination(index); },
      [&](MIDIObjectRef ref) { return makeInputEndpoint(service, ref); });
}

std::optional<MIDIObjectRef> findSource(const MIDIService& service, std::int32_t uniqueID) {
  return firstWithUniqueID(service, uniqueID, service.MIDIGetNumberOfSources(),
                           [&](std::size_t index) { return service.MIDIGetSource(index); });
}

std::optional<MIDIObjectRef> findDestination(const MIDIService& service, std::int32_t uniqueID) {
  return firstWithUniqueID(service, uniqueID, service.MIDIGetNumberOfDestinations(),
                           [&](std::size_t index) { return service.MIDIGetDestination(index); });
}

MIDIDevice makeDevice(const MIDIService& service, MIDIObjectRef ref) {
  return makeObject<MIDIDevice>(service, ref);
}

MIDIEntity makeEntity(const MIDIService& service, MIDIObjectRef ref) {
  return makeObject<MIDIEntity>(service, ref);
}

MIDIInputEndpoint makeInputEndpoint(const MIDIService& service, MIDIObjectRef ref) {
  return makeObject<MIDIInputEndpoint>(service, ref);
}

MIDIOutputEndpoint makeOutputEndpoint(const MIDIService& service, MIDIObjectRef ref) {
  return makeObject<MIDIOutputEndpoint>(service, ref);
}

}  // namespace midikit::io

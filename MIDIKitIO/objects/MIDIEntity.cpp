#include "MIDIKitIO/objects/MIDIEntity.hpp"

#include "MIDIKitCore/MIDIIOError.hpp"
#include "MIDIKitIO/objects/MIDIDevice.hpp"
#include "MIDIKitIO/objects/MIDIEndpoint.hpp"
#include "MIDIKitIO/objects/ObjectList.hpp"
#include "MIDIKitIO/objects/SystemObjects.hpp"
#include "MIDIKitInternals/Text.hpp"

namespace midikit::io {

std::optional<MIDIDevice> MIDIEntity::device(const MIDIService& service) const {
  MIDIObjectRef device = 0;
  core::checkStatus(service.MIDIEntityGetDevice(coreMIDIObjectRef, device));
  return device != 0 ? std::optional(makeDevice(service, device)) : std::nullopt;
}

std::vector<MIDIInputEndpoint> MIDIEntity::inputs(const MIDIService& service) const {
  return listObjects(
      service.MIDIEntityGetNumberOfDestinations(coreMIDIObjectRef),
      [&](std::size_t index) { return service.MIDIEntityGetDestination(coreMIDIObjectRef, index); },
      [&](MIDIObjectRef ref) { return makeInputEndpoint(service, ref); });
}

std::vector<MIDIOutputEndpoint> MIDIEntity::outputs(const MIDIService& service) const {
  return listObjects(
      service.MIDIEntityGetNumberOfSources(coreMIDIObjectRef),
      [&](std::size_t index) { return service.MIDIEntityGetSource(coreMIDIObjectRef, index); },
      [&](MIDIObjectRef ref) { return makeOutputEndpoint(service, ref); });
}

bool MIDIEntity::exists(const MIDIService& service) const {
  try {
    return device(service).has_value();
  } catch (const core::MIDIIOError&) {
    return false;
  }
}

std::string MIDIEntity::debugText(const MIDIService& service) const {
  return "MIDIEntity(name: " + internals::quoted(name) + ", uniqueID: " + std::to_string(uniqueID) +
         ", exists: " + (exists(service) ? "true" : "false") + ")";
}

}  // namespace midikit::io

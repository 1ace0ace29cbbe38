#include "MIDIKitIO/objects/MIDIEndpoint.hpp"

#include "MIDIKitCore/MIDIIOError.hpp"
#include "MIDIKitIO/objects/SystemObjects.hpp"
#include "MIDIKitInternals/Text.hpp"

namespace midikit::io {

template <class Endpoint>
MIDIEntity MIDIEndpointOperations<Endpoint>::entity(const MIDIService& service) const {
  MIDIObjectRef entity = 0;
  core::checkStatus(service.MIDIEndpointGetEntity(self().coreMIDIObjectRef, entity));
  if (entity == 0) {
    throw core::MIDIIOError::readError("Error getting entity ID for endpoint ref " +
                                       std::to_string(self().coreMIDIObjectRef));
  }
  return makeEntity(service, entity);
}

template <class Endpoint>
std::optional<MIDIDevice> MIDIEndpointOperations<Endpoint>::device(const MIDIService& service) const {
  return entity(service).device(service);
}

template <class Endpoint>
bool MIDIEndpointOperations<Endpoint>::exists(const MIDIService& service) const {
  const bool isInput = self().endpointType == MIDIEndpointType::input;
  return (isInput ? findDestination(service, self().uniqueID) : findSource(service, self().uniqueID))
      .has_value();
}

template <class Endpoint>
std::string MIDIEndpointOperations<Endpoint>::debugText() const {
  return std::string(self().recordName) + "(name: " + internals::quoted(self().name) +
         ", uniqueID: " + std::to_string(self().uniqueID) + ")";
}

template struct MIDIEndpointOperations<MIDIInputEndpoint>;
template struct MIDIEndpointOperations<MIDIOutputEndpoint>;
template struct MIDIEndpointOperations<AnyMIDIEndpoint>;

}  // namespace midikit::io

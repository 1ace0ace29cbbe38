#include "MIDIKitIO/objects/AnyMIDIIOObject.hpp"

namespace midikit::io {
namespace {

template <class Endpoint>
Endpoint recordOf(const AnyMIDIEndpoint& any) {
  Endpoint endpoint;
  endpoint.name = any.name;
  endpoint.uniqueID = any.uniqueID;
  endpoint.coreMIDIObjectRef = any.coreMIDIObjectRef;
  endpoint.displayName = any.displayName;
  return endpoint;
}

}  // namespace

AnyMIDIIOObject::AnyMIDIIOObject(const AnyMIDIEndpoint& endpoint)
    : case_(endpoint.endpointType == MIDIEndpointType::input ? Case(recordOf<MIDIInputEndpoint>(endpoint))
                                                             : Case(recordOf<MIDIOutputEndpoint>(endpoint))) {
}

const std::string& AnyMIDIIOObject::name() const {
  return std::visit([](const auto& record) -> const std::string& { return record.name; }, case_);
}

std::int32_t AnyMIDIIOObject::uniqueID() const {
  return std::visit([](const auto& record) { return record.uniqueID; }, case_);
}

MIDIObjectRef AnyMIDIIOObject::coreMIDIObjectRef() const {
  return std::visit([](const auto& record) { return record.coreMIDIObjectRef; }, case_);
}

std::string AnyMIDIIOObject::propertyText(const MIDIService& service, Property property) const {
  return io::propertyText(service, coreMIDIObjectRef(), property);
}

std::vector<std::pair<std::string_view, std::string>> AnyMIDIIOObject::properties(const MIDIService& service,
                                                                                  bool onlyRelevant) const {
  return io::properties(service, coreMIDIObjectRef(), objectType(), onlyRelevant);
}

std::string AnyMIDIIOObject::debugText(const MIDIService& service) const {
  return std::visit([&service](const auto& record) { return record.debugText(service); }, case_);
}

}  // namespace midikit::io

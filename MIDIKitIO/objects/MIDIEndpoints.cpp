#include "MIDIKitIO/objects/MIDIEndpoints.hpp"

#include <cstdint>
#include <set>

#include "MIDIKitCore/detail/FieldHash.hpp"
#include "MIDIKitIO/manager/MIDIManager.hpp"
#include "MIDIKitIO/objects/SystemObjects.hpp"

namespace midikit::io {
namespace {

template <class Endpoint>
std::vector<Endpoint> without(const std::vector<Endpoint>& endpoints, const std::set<std::int32_t>& owned) {
  std::vector<Endpoint> others;
  others.reserve(endpoints.size());
  for (const auto& endpoint : endpoints) {
    if (!owned.contains(endpoint.uniqueID)) {
      others.push_back(endpoint);
    }
  }
  return others;
}

}  // namespace

void MIDIEndpoints::refresh(const MIDIService& service) {
  const auto owner = manager.lock();
  const auto walk = [&] {
    inputs = systemDestinations(service);
    outputs = systemSources(service);
    inputsUnowned = owner ? without(inputs, owner->ownedUniqueIDs(MIDIEndpointType::input)) : inputs;
    outputsUnowned = owner ? without(outputs, owner->ownedUniqueIDs(MIDIEndpointType::output)) : outputs;
  };
  owner ? owner->ownership().look(walk) : walk();
}

bool operator==(const MIDIEndpoints& a, const MIDIEndpoints& b) {
  return a.manager.lock() == b.manager.lock() && a.inputs == b.inputs && a.inputsUnowned == b.inputsUnowned &&
         a.outputs == b.outputs && a.outputsUnowned == b.outputsUnowned;
}

}  // namespace midikit::io

std::size_t std::hash<midikit::io::MIDIEndpoints>::operator()(
    const midikit::io::MIDIEndpoints& endpoints) const noexcept {
  return midikit::core::hashOf(endpoints.inputs, endpoints.inputsUnowned, endpoints.outputs,
                               endpoints.outputsUnowned);
}

#include "MIDIKitIO/identity/MIDIEndpointFilter.hpp"

#include <algorithm>

#include "MIDIKitCore/detail/FieldHash.hpp"
#include "MIDIKitIO/manager/MIDIManager.hpp"

namespace midikit::io {

std::vector<AnyMIDIEndpoint> MIDIEndpointMaskedFilter::ownedEndpoints(const MIDIManager& manager) {
  std::vector<AnyMIDIEndpoint> owned;
  manager.ownership().look([&] {
    owned.clear();
    for (const auto& [tag, input] : manager.managedInputs()) {
      owned.emplace_back(input->endpoint());
    }
    for (const auto& [tag, output] : manager.managedOutputs()) {
      owned.emplace_back(output->endpoint());
    }
  });
  return owned;
}

bool MIDIEndpointMaskedFilter::keeps(const AnyMIDIEndpoint& endpoint,
                                     const std::vector<AnyMIDIEndpoint>& owned) const {
  const auto& criteria = filter_.criteria;
  const bool matchesOne = std::ranges::any_of(
      criteria, [&](const MIDIEndpointIdentity& identity) { return identity.matches(endpoint); });
  const bool isOwned = std::ranges::find(owned, endpoint) != owned.end();
  if (mask_ == MIDIEndpointFilterMask::only) {
    return (criteria.empty() || matchesOne) && (!filter_.owned || isOwned);
  }
  return !matchesOne && !(filter_.owned && isOwned);
}

}  // namespace midikit::io

std::size_t std::hash<midikit::io::MIDIEndpointFilter>::operator()(
    const midikit::io::MIDIEndpointFilter& filter) const noexcept {
  return midikit::core::hashOf(filter.owned, filter.criteria);
}

#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

#include "MIDIKitIO/identity/MIDIEndpointIdentity.hpp"

namespace midikit::io {

class MIDIManager;

/// Which endpoints are meant. A plain value.
struct MIDIEndpointFilter {
  /// The endpoints of the program's own virtual inputs and outputs.
  bool owned = false;
  MIDIEndpointIdentities criteria;

  friend bool operator==(const MIDIEndpointFilter&, const MIDIEndpointFilter&) = default;
};

/// What is done with the endpoints that a filter means.
enum class MIDIEndpointFilterMask : std::uint8_t {
  only,  ///< what fulfils all that the filter says stays
  drop,  ///< what fulfils any of it goes
};

/// A filter with its mask. A plain value.
class MIDIEndpointMaskedFilter {
 public:
  MIDIEndpointMaskedFilter(MIDIEndpointFilterMask mask, MIDIEndpointFilter filter)
      : mask_(mask), filter_(std::move(filter)) {}

  static MIDIEndpointMaskedFilter only(MIDIEndpointFilter filter) {
    return {MIDIEndpointFilterMask::only, std::move(filter)};
  }
  static MIDIEndpointMaskedFilter drop(MIDIEndpointFilter filter) {
    return {MIDIEndpointFilterMask::drop, std::move(filter)};
  }

  MIDIEndpointFilterMask mask() const { return mask_; }
  const MIDIEndpointFilter& filter() const { return filter_; }

  /// The endpoints that stay, in their order. What the program owns is looked up at the moment of the call,
  /// by unique ID alone, and waits for a virtual endpoint that is just being made.
  ///
  /// Thread-safe: yes.
  /// Realtime-safe: no, it asks the service.
  template <MIDIEndpoint Endpoint>
  std::vector<Endpoint> apply(const std::vector<Endpoint>& endpoints, const MIDIManager& manager) const {
    const auto owned = filter_.owned ? ownedEndpoints(manager) : std::vector<AnyMIDIEndpoint>();
    std::vector<Endpoint> staying;
    for (const auto& endpoint : endpoints) {
      if (keeps(endpoint, owned)) {
        staying.push_back(endpoint);
      }
    }
    return staying;
  }

  friend bool operator==(const MIDIEndpointMaskedFilter&, const MIDIEndpointMaskedFilter&) = default;

 private:
  /// Those of the managed inputs, then those of the managed outputs.
  static std::vector<AnyMIDIEndpoint> ownedEndpoints(const MIDIManager& manager);
  bool keeps(const AnyMIDIEndpoint& endpoint, const std::vector<AnyMIDIEndpoint>& owned) const;

  MIDIEndpointFilterMask mask_;
  MIDIEndpointFilter filter_;
};

}  // namespace midikit::io

template <>
struct std::hash<midikit::io::MIDIEndpointFilter> {
  std::size_t operator()(const midikit::io::MIDIEndpointFilter& filter) const noexcept;
};

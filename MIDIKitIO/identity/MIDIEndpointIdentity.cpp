#include "MIDIKitIO/identity/MIDIEndpointIdentity.hpp"

#include <algorithm>
#include <string_view>

#include "MIDIKitCore/detail/FieldHash.hpp"
#include "MIDIKitInternals/Text.hpp"

namespace midikit::io {
namespace {

using Identity = MIDIEndpointIdentity;

/// The first endpoint that an identity means in `count` endpoints.
template <class Endpoint>
struct Search {
  const Endpoint* operator()(const Identity::Name& wanted) const {
    return firstWith([&](const Endpoint& endpoint) { return endpoint.name == wanted.name; });
  }
  const Endpoint* operator()(const Identity::DisplayName& wanted) const {
    return firstWith([&](const Endpoint& endpoint) { return endpoint.displayName == wanted.displayName; });
  }
  const Endpoint* operator()(const Identity::UniqueID& wanted) const {
    return firstWith([&](const Endpoint& endpoint) { return endpoint.uniqueID == wanted.uniqueID; });
  }
  const Endpoint* operator()(const Identity::UniqueIDWithFallback& wanted) const {
    const auto* byID = (*this)(Identity::UniqueID{wanted.id});
    return byID != nullptr || wanted.fallbackDisplayName.empty()
               ? byID
               : (*this)(Identity::DisplayName{wanted.fallbackDisplayName});
  }

  template <class Condition>
  const Endpoint* firstWith(const Condition& condition) const {
    const auto* end = endpoints + count;
    const auto* found = std::find_if(endpoints, end, condition);
    return found != end ? found : nullptr;
  }

  const Endpoint* endpoints;
  std::size_t count;
};

struct Description {
  std::string operator()(const Identity::Name& identity) const {
    return "Endpoint Name: " + internals::quoted(identity.name);
  }
  std::string operator()(const Identity::DisplayName& identity) const {
    return "Endpoint Display Name: " + internals::quoted(identity.displayName);
  }
  std::string operator()(const Identity::UniqueID& identity) const {
    return "UniqueID: " + std::to_string(identity.uniqueID);
  }
  std::string operator()(const Identity::UniqueIDWithFallback& identity) const {
    return "UniqueID: " + std::to_string(identity.id) +
           " with fallback EndpointDisplayName: " + internals::quoted(identity.fallbackDisplayName);
  }
};

/// The name of the case, then the payload.
struct Hash {
  std::size_t operator()(const Identity::Name& identity) const { return of("name", identity.name); }
  std::size_t operator()(const Identity::DisplayName& identity) const {
    return of("displayName", identity.displayName);
  }
  std::size_t operator()(const Identity::UniqueID& identity) const {
    return of("uniqueID", identity.uniqueID);
  }
  std::size_t operator()(const Identity::UniqueIDWithFallback& identity) const {
    return of("uniqueIDWithFallback", identity.id, identity.fallbackDisplayName);
  }

  template <class... Payload>
  static std::size_t of(std::string_view caseName, const Payload&... payload) {
    return core::hashOf(caseName, payload...);
  }
};

}  // namespace

template <class Endpoint>
const Endpoint* MIDIEndpointIdentity::find(const Endpoint* endpoints, std::size_t count) const {
  return std::visit(Search<Endpoint>{endpoints, count}, case_);
}

template const MIDIInputEndpoint* MIDIEndpointIdentity::find(const MIDIInputEndpoint*, std::size_t) const;
template const MIDIOutputEndpoint* MIDIEndpointIdentity::find(const MIDIOutputEndpoint*, std::size_t) const;
template const AnyMIDIEndpoint* MIDIEndpointIdentity::find(const AnyMIDIEndpoint*, std::size_t) const;

std::string MIDIEndpointIdentity::description() const {
  return std::visit(Description(), case_);
}

std::string description(const MIDIEndpointIdentities& identities) {
  return internals::listText(identities, [](const auto& identity) { return identity.description(); });
}

}  // namespace midikit::io

std::size_t std::hash<midikit::io::MIDIEndpointIdentity>::operator()(
    const midikit::io::MIDIEndpointIdentity& identity) const noexcept {
  return std::visit(midikit::io::Hash(), identity.asCase());
}

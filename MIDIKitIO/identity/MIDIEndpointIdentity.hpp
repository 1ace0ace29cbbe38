#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "MIDIKitIO/objects/MIDIEndpoint.hpp"

namespace midikit::io {

/// What an endpoint is recognised by, whether it is there or not: connections hold these, and find the
/// endpoint of the moment when they need one. A plain value.
class MIDIEndpointIdentity {
 public:
  struct Name {
    std::string name;
    auto operator<=>(const Name&) const = default;
  };
  struct DisplayName {
    std::string displayName;
    auto operator<=>(const DisplayName&) const = default;
  };
  struct UniqueID {
    std::int32_t uniqueID;
    auto operator<=>(const UniqueID&) const = default;
  };
  struct UniqueIDWithFallback {
    std::int32_t id;
    std::string fallbackDisplayName;
    auto operator<=>(const UniqueIDWithFallback&) const = default;
  };
  using Case = std::variant<Name, DisplayName, UniqueID, UniqueIDWithFallback>;

  /// An empty name means an endpoint without one.
  static MIDIEndpointIdentity name(std::string text) { return Case(Name{std::move(text)}); }
  /// An empty display name means an endpoint without one.
  static MIDIEndpointIdentity displayName(std::string text) { return Case(DisplayName{std::move(text)}); }
  static MIDIEndpointIdentity uniqueID(std::int32_t uniqueID) { return Case(UniqueID{uniqueID}); }
  /// The endpoint with that unique ID; if the list has none, the one with that display name. An empty display
  /// name means no endpoint.
  static MIDIEndpointIdentity uniqueIDWithFallback(std::int32_t id, std::string fallbackDisplayName) {
    return Case(UniqueIDWithFallback{id, std::move(fallbackDisplayName)});
  }

  /// Which it is, for `std::visit` or `std::get_if`.
  const Case& asCase() const { return case_; }

  /// The first endpoint of the list that this means; none if there is none. Endpoints of the same name are
  /// not distinguished: the order of the list decides.
  ///
  /// Thread-safe: yes.
  /// Realtime-safe: no, it copies the record.
  template <MIDIEndpoint Endpoint>
  std::optional<Endpoint> locateIn(const std::vector<Endpoint>& endpoints) const {
    const auto* found = find(endpoints.data(), endpoints.size());
    return found != nullptr ? std::optional(*found) : std::nullopt;
  }

  /// Whether locateIn() would find the endpoint in a list of it alone.
  ///
  /// Thread-safe: yes.
  /// Realtime-safe: yes.
  template <MIDIEndpoint Endpoint>
  bool matches(const Endpoint& endpoint) const {
    return find(&endpoint, 1) != nullptr;
  }

  /// `Endpoint Name: "a name"`, `Endpoint Display Name: "a name"`, `UniqueID: 1`,
  /// `UniqueID: 1 with fallback EndpointDisplayName: "a name"`
  std::string description() const;

  /// Same case and equal payloads. The order is that of the cases, then of the payloads.
  friend auto operator<=>(const MIDIEndpointIdentity&, const MIDIEndpointIdentity&) = default;

 private:
  MIDIEndpointIdentity(Case itsCase) : case_(std::move(itsCase)) {}

  template <class Endpoint>
  const Endpoint* find(const Endpoint* endpoints, std::size_t count) const;

  Case case_;
};

extern template const MIDIInputEndpoint* MIDIEndpointIdentity::find(const MIDIInputEndpoint*,
                                                                    std::size_t) const;
extern template const MIDIOutputEndpoint* MIDIEndpointIdentity::find(const MIDIOutputEndpoint*,
                                                                     std::size_t) const;
extern template const AnyMIDIEndpoint* MIDIEndpointIdentity::find(const AnyMIDIEndpoint*, std::size_t) const;

/// The criteria of connections and filters.
using MIDIEndpointIdentities = std::set<MIDIEndpointIdentity>;

/// The `uniqueID` identity of each endpoint.
///
/// Thread-safe: yes.
/// Realtime-safe: no, it allocates.
template <MIDIEndpoint Endpoint>
MIDIEndpointIdentities identitiesOf(const std::vector<Endpoint>& endpoints) {
  MIDIEndpointIdentities identities;
  for (const auto& endpoint : endpoints) {
    identities.insert(MIDIEndpointIdentity::uniqueID(endpoint.uniqueID));
  }
  return identities;
}

/// `[Endpoint Name: "a name", UniqueID: 1]`, in the order of the identities.
std::string description(const MIDIEndpointIdentities& identities);

}  // namespace midikit::io

template <>
struct std::hash<midikit::io::MIDIEndpointIdentity> {
  std::size_t operator()(const midikit::io::MIDIEndpointIdentity& identity) const noexcept;
};

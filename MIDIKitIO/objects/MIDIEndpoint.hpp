#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "MIDIKitIO/objects/MIDIDevice.hpp"
#include "MIDIKitIO/objects/MIDIEntity.hpp"
#include "MIDIKitIO/objects/MIDIIOObjectType.hpp"
#include "MIDIKitIO/objects/PropertyText.hpp"
#include "MIDIKitIO/platform/MIDIService.hpp"

namespace midikit::io {

/// What the records of endpoints have alike. What isn't in their fields is read from the platform at the
/// moment of the call, on the calling thread. `Endpoint` has the fields of a record, `displayName`,
/// `endpointType` and `recordName`. For every call that takes the service:
///
/// Thread-safe: yes, as a value is.
/// Realtime-safe: no, it asks the service and allocates.
template <class Endpoint>
// A private constructor would keep records from being aggregates.
// NOLINTNEXTLINE(bugprone-crtp-constructor-accessibility)
struct MIDIEndpointOperations : MIDIIOObjectProperties<Endpoint> {
  /// The entity that it belongs to.
  /// @throws MIDIIOError `osStatus`, or `readError` if it belongs to none, as a virtual endpoint
  MIDIEntity entity(const MIDIService& service) const;

  /// The device of its entity; none if the platform says that there is none.
  /// @throws MIDIIOError as the entity's and the entity's own device() do
  std::optional<MIDIDevice> device(const MIDIService& service) const;

  /// Whether the platform lists an endpoint of this direction with this unique ID.
  bool exists(const MIDIService& service) const;

  /// `MIDIInputEndpoint(name: "a name", uniqueID: 1)`
  std::string debugText() const;
  std::string debugText(const MIDIService&) const { return debugText(); }

  /// Endpoints are equal, and have the same hash, by their unique ID alone.
  friend bool operator==(const Endpoint& a, const Endpoint& b) { return a.uniqueID == b.uniqueID; }

 private:
  const Endpoint& self() const { return static_cast<const Endpoint&>(*this); }
};

/// An endpoint that the program can send into, as it was when it was asked for: a plain value that keeps
/// nothing alive.
struct MIDIInputEndpoint : MIDIEndpointOperations<MIDIInputEndpoint> {
  static constexpr MIDIIOObjectType objectType = MIDIIOObjectType::inputEndpoint;
  static constexpr MIDIEndpointType endpointType = MIDIEndpointType::input;
  static constexpr const char* recordName = "MIDIInputEndpoint";

  std::string name;           ///< empty if the platform has none
  std::int32_t uniqueID = 0;  ///< 0 if the platform has none
  MIDIObjectRef coreMIDIObjectRef = 0;
  std::string displayName;  ///< empty if the platform has none, whatever the name
};

/// An endpoint that the program can listen to; otherwise as MIDIInputEndpoint.
struct MIDIOutputEndpoint : MIDIEndpointOperations<MIDIOutputEndpoint> {
  static constexpr MIDIIOObjectType objectType = MIDIIOObjectType::outputEndpoint;
  static constexpr MIDIEndpointType endpointType = MIDIEndpointType::output;
  static constexpr const char* recordName = "MIDIOutputEndpoint";

  std::string name;           ///< empty if the platform has none
  std::int32_t uniqueID = 0;  ///< 0 if the platform has none
  MIDIObjectRef coreMIDIObjectRef = 0;
  std::string displayName;  ///< empty if the platform has none, whatever the name
};

/// An endpoint of either direction.
struct AnyMIDIEndpoint : MIDIEndpointOperations<AnyMIDIEndpoint> {
  static constexpr const char* recordName = "AnyMIDIEndpoint";

  MIDIIOObjectType objectType = MIDIIOObjectType::inputEndpoint;
  std::string name;
  std::int32_t uniqueID = 0;
  MIDIObjectRef coreMIDIObjectRef = 0;
  std::string displayName;
  MIDIEndpointType endpointType = MIDIEndpointType::input;

  AnyMIDIEndpoint(const MIDIInputEndpoint& endpoint) : AnyMIDIEndpoint(endpoint, FromEndpoint()) {}
  AnyMIDIEndpoint(const MIDIOutputEndpoint& endpoint) : AnyMIDIEndpoint(endpoint, FromEndpoint()) {}

 private:
  struct FromEndpoint {};
  template <class Endpoint>
  AnyMIDIEndpoint(const Endpoint& endpoint, FromEndpoint)
      : objectType(endpoint.objectType),
        name(endpoint.name),
        uniqueID(endpoint.uniqueID),
        coreMIDIObjectRef(endpoint.coreMIDIObjectRef),
        displayName(endpoint.displayName),
        endpointType(endpoint.endpointType) {}
};

extern template struct MIDIEndpointOperations<MIDIInputEndpoint>;
extern template struct MIDIEndpointOperations<MIDIOutputEndpoint>;
extern template struct MIDIEndpointOperations<AnyMIDIEndpoint>;

/// The hash of an endpoint's record.
template <class Endpoint>
struct MIDIEndpointHash {
  std::size_t operator()(const Endpoint& endpoint) const noexcept {
    return std::hash<std::int32_t>()(endpoint.uniqueID);
  }
};

/// What describes an endpoint, whatever its direction: the three records.
template <class T>
concept MIDIEndpoint = std::convertible_to<T, AnyMIDIEndpoint> && requires(const T& endpoint) {
  { endpoint.displayName } -> std::convertible_to<std::string>;
  { endpoint.endpointType } -> std::convertible_to<MIDIEndpointType>;
};

namespace internal {

/// Endpoints that are read from the platform by their reference.
template <class T>
concept MIDIEndpoint = io::MIDIEndpoint<T> && std::derived_from<T, MIDIEndpointOperations<T>>;
static_assert(MIDIEndpoint<MIDIInputEndpoint> && MIDIEndpoint<MIDIOutputEndpoint> &&
              MIDIEndpoint<AnyMIDIEndpoint>);

}  // namespace internal

}  // namespace midikit::io

template <>
struct std::hash<midikit::io::MIDIInputEndpoint>
    : midikit::io::MIDIEndpointHash<midikit::io::MIDIInputEndpoint> {};
template <>
struct std::hash<midikit::io::MIDIOutputEndpoint>
    : midikit::io::MIDIEndpointHash<midikit::io::MIDIOutputEndpoint> {};
template <>
struct std::hash<midikit::io::AnyMIDIEndpoint> : midikit::io::MIDIEndpointHash<midikit::io::AnyMIDIEndpoint> {
};

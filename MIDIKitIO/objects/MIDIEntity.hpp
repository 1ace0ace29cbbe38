#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "MIDIKitIO/objects/MIDIIOObjectType.hpp"
#include "MIDIKitIO/objects/PropertyText.hpp"
#include "MIDIKitIO/platform/MIDIService.hpp"

namespace midikit::io {

struct MIDIDevice;
struct MIDIInputEndpoint;
struct MIDIOutputEndpoint;

/// A part of a device that has endpoints of its own, as it was when it was asked for: a plain value, as
/// MIDIDevice. For every call that takes the service:
///
/// Thread-safe: yes, as a value is.
/// Realtime-safe: no, it asks the service and allocates.
struct MIDIEntity : MIDIIOObjectProperties<MIDIEntity> {
  static constexpr MIDIIOObjectType objectType = MIDIIOObjectType::entity;

  std::string name;           ///< empty if the platform has none
  std::int32_t uniqueID = 0;  ///< 0 if the platform has none
  MIDIObjectRef coreMIDIObjectRef = 0;

  /// The device that it is a part of; none if the platform says that there is none.
  /// @throws MIDIIOError `osStatus`
  std::optional<MIDIDevice> device(const MIDIService& service) const;

  /// In the platform's order. Empty if the entity is gone.
  std::vector<MIDIInputEndpoint> inputs(const MIDIService& service) const;
  std::vector<MIDIOutputEndpoint> outputs(const MIDIService& service) const;

  /// Whether device() returns one; a failure counts as no.
  bool exists(const MIDIService& service) const;

  /// `MIDIEntity(name: "a name", uniqueID: 1, exists: true)`
  std::string debugText(const MIDIService& service) const;

  /// Entities are equal, and have the same hash, by their reference alone.
  friend bool operator==(const MIDIEntity& a, const MIDIEntity& b) {
    return a.coreMIDIObjectRef == b.coreMIDIObjectRef;
  }
};

}  // namespace midikit::io

template <>
struct std::hash<midikit::io::MIDIEntity> {
  std::size_t operator()(const midikit::io::MIDIEntity& entity) const noexcept {
    return std::hash<midikit::io::MIDIObjectRef>()(entity.coreMIDIObjectRef);
  }
};

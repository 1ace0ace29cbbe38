#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "MIDIKitIO/objects/MIDIIOObjectType.hpp"
#include "MIDIKitIO/objects/PropertyText.hpp"
#include "MIDIKitIO/platform/MIDIService.hpp"

namespace midikit::io {

struct MIDIEntity;
struct MIDIInputEndpoint;
struct MIDIOutputEndpoint;

/// A device as it was when it was asked for: a plain value that keeps nothing alive. What isn't in its fields
/// is read from the platform at the moment of the call, on the calling thread. Two devices may have the same
/// name. For every call that takes the service:
///
/// Thread-safe: yes, as a value is.
/// Realtime-safe: no, it asks the service and allocates.
struct MIDIDevice : MIDIIOObjectProperties<MIDIDevice> {
  static constexpr MIDIIOObjectType objectType = MIDIIOObjectType::device;

  std::string name;           ///< empty if the platform has none
  std::int32_t uniqueID = 0;  ///< 0 if the platform has none
  MIDIObjectRef coreMIDIObjectRef = 0;

  /// In the platform's order. Empty if the device is gone.
  std::vector<MIDIEntity> entities(const MIDIService& service) const;

  /// The endpoints of all entities, in their order.
  std::vector<MIDIInputEndpoint> inputs(const MIDIService& service) const;
  std::vector<MIDIOutputEndpoint> outputs(const MIDIService& service) const;

  /// Whether the platform lists a device with this unique ID.
  bool exists(const MIDIService& service) const;

  /// `MIDIDevice(name: "a name", uniqueID: 1, exists: true)`
  std::string debugText(const MIDIService& service) const;

  /// Devices are equal, and have the same hash, by their reference alone.
  friend bool operator==(const MIDIDevice& a, const MIDIDevice& b) {
    return a.coreMIDIObjectRef == b.coreMIDIObjectRef;
  }
};

}  // namespace midikit::io

template <>
struct std::hash<midikit::io::MIDIDevice> {
  std::size_t operator()(const midikit::io::MIDIDevice& device) const noexcept {
    return std::hash<midikit::io::MIDIObjectRef>()(device.coreMIDIObjectRef);
  }
};

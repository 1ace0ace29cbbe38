#pragma once

#include <concepts>
#include <cstddef>
#include <functional>
#include <unordered_map>
#include <vector>

#include "MIDIKitIO/objects/MIDIDevice.hpp"
#include "MIDIKitIO/objects/MIDIEndpoint.hpp"

namespace midikit::io {

/// The devices of one moment, in the platform's order. For every call:
///
/// Thread-safe: yes, as a value is.
/// Realtime-safe: no, it asks the service and allocates.
struct MIDIDevices {
  std::vector<MIDIDevice> devices;

  /// Replaces the list by that of this moment.
  void refresh(const MIDIService& service);

  /// The endpoints of each device as they are at the moment of the call.
  std::unordered_map<MIDIDevice, std::vector<MIDIInputEndpoint>> inputsByDevice(
      const MIDIService& service) const;
  std::unordered_map<MIDIDevice, std::vector<MIDIOutputEndpoint>> outputsByDevice(
      const MIDIService& service) const;

  friend bool operator==(const MIDIDevices&, const MIDIDevices&) = default;
};

/// What lists devices.
template <class T>
concept MIDIDevicesProtocol = requires(const T& list) {
  { list.devices } -> std::convertible_to<std::vector<MIDIDevice>>;
};

/// What lists the platform's devices, and can be brought up to date.
template <class T>
concept MIDIIODevicesProtocol =
    MIDIDevicesProtocol<T> && requires(T& list, const T& constant, const MIDIService& service) {
      list.refresh(service);
      constant.inputsByDevice(service);
      constant.outputsByDevice(service);
    };
static_assert(MIDIIODevicesProtocol<MIDIDevices>);

}  // namespace midikit::io

template <>
struct std::hash<midikit::io::MIDIDevices> {
  std::size_t operator()(const midikit::io::MIDIDevices& devices) const noexcept;
};

#pragma once

#include <concepts>
#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

#include "MIDIKitIO/objects/MIDIEndpoint.hpp"

namespace midikit::io {

class MIDIManager;

/// The endpoints of one moment, in the platform's order.
struct MIDIEndpoints {
  /// Whose own endpoints the "unowned" lists leave out. Set once, by that manager.
  std::weak_ptr<MIDIManager> manager;

  std::vector<MIDIInputEndpoint> inputs;
  std::vector<MIDIInputEndpoint> inputsUnowned;  ///< without the virtual inputs of the manager
  std::vector<MIDIOutputEndpoint> outputs;
  std::vector<MIDIOutputEndpoint> outputsUnowned;  ///< without the virtual outputs of the manager

  /// Replaces the lists by those of this moment. Without a manager, or when it is gone, nothing is left out.
  /// Waits for an endpoint that the manager is making.
  ///
  /// Thread-safe: yes, as a value is.
  /// Realtime-safe: no, it asks the service, waits and allocates.
  void refresh(const MIDIService& service);

  /// Same manager, or none on both sides, and equal lists.
  friend bool operator==(const MIDIEndpoints& a, const MIDIEndpoints& b);
};

/// What lists endpoints, all and without the program's own.
template <class T>
concept MIDIEndpointsProtocol = requires(const T& list) {
  { list.inputs } -> std::convertible_to<std::vector<MIDIInputEndpoint>>;
  { list.inputsUnowned } -> std::convertible_to<std::vector<MIDIInputEndpoint>>;
  { list.outputs } -> std::convertible_to<std::vector<MIDIOutputEndpoint>>;
  { list.outputsUnowned } -> std::convertible_to<std::vector<MIDIOutputEndpoint>>;
};

/// What lists the platform's endpoints for a manager, and can be brought up to date.
template <class T>
concept MIDIIOEndpointsProtocol = MIDIEndpointsProtocol<T> && requires(T& list, const MIDIService& service) {
  { list.manager } -> std::convertible_to<std::weak_ptr<MIDIManager>>;
  list.refresh(service);
};
static_assert(MIDIIOEndpointsProtocol<MIDIEndpoints>);

}  // namespace midikit::io

template <>
struct std::hash<midikit::io::MIDIEndpoints> {
  std::size_t operator()(const midikit::io::MIDIEndpoints& endpoints) const noexcept;
};

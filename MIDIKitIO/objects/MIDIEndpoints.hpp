#pragma once

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
  void refresh(const MIDIService& service);

  /// Same manager, or none on both sides, and equal lists.
  friend bool operator==(const MIDIEndpoints& a, const MIDIEndpoints& b);
};

}  // namespace midikit::io

template <>
struct std::hash<midikit::io::MIDIEndpoints> {
  std::size_t operator()(const midikit::io::MIDIEndpoints& endpoints) const noexcept;
};

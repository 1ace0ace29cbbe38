#pragma once

#include <optional>
#include <utility>

#include "MIDIKitIO/identity/MIDIEndpointIdentity.hpp"

namespace midikit::io {

/// What an input connection listens to. A plain value.
class MIDIInputConnectionMode {
 public:
  /// Those that match, as they come and go.
  static MIDIInputConnectionMode outputs(MIDIEndpointIdentities matching) {
    return MIDIInputConnectionMode(std::move(matching));
  }
  /// All that are there, and all that come.
  static MIDIInputConnectionMode allOutputs() { return MIDIInputConnectionMode(std::nullopt); }

  /// None means all.
  const std::optional<MIDIEndpointIdentities>& matching() const { return matching_; }

  friend bool operator==(const MIDIInputConnectionMode&, const MIDIInputConnectionMode&) = default;

 private:
  explicit MIDIInputConnectionMode(std::optional<MIDIEndpointIdentities> matching)
      : matching_(std::move(matching)) {}

  std::optional<MIDIEndpointIdentities> matching_;
};

/// What an output connection sends to. A plain value.
class MIDIOutputConnectionMode {
 public:
  /// Those that match, as they come and go.
  static MIDIOutputConnectionMode inputs(MIDIEndpointIdentities matching) {
    return MIDIOutputConnectionMode(std::move(matching));
  }
  /// All that are there, and all that come.
  static MIDIOutputConnectionMode allInputs() { return MIDIOutputConnectionMode(std::nullopt); }

  /// None means all.
  const std::optional<MIDIEndpointIdentities>& matching() const { return matching_; }

  friend bool operator==(const MIDIOutputConnectionMode&, const MIDIOutputConnectionMode&) = default;

 private:
  explicit MIDIOutputConnectionMode(std::optional<MIDIEndpointIdentities> matching)
      : matching_(std::move(matching)) {}

  std::optional<MIDIEndpointIdentities> matching_;
};

}  // namespace midikit::io

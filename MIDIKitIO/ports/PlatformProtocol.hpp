#pragma once

#include <optional>

#include "MIDIKitCore/MIDIIOError.hpp"
#include "MIDIKitIO/manager/CoreMIDIAPIVersion.hpp"
#include "MIDIKitIO/platform/MIDIServiceTypes.hpp"

namespace midikit::io::internal {

/// The protocol with which ports and endpoints are made through the newer interface; none for the older one.
/// @throws MIDIIOError `internalInconsistency` if the platform doesn't have the interface
inline std::optional<MIDIProtocolID> platformProtocol(CoreMIDIAPIVersion api, PlatformVersion platform) {
  if (!api.isValidOn(platform)) {
    throw core::MIDIIOError::internalInconsistency("New Core MIDI API is not accessible on this platform.");
  }
  const auto protocol = api.protocol();
  if (!protocol) {
    return std::nullopt;
  }
  return *protocol == core::MIDIProtocolVersion::midi2_0 ? MIDIProtocolID::midi2_0 : MIDIProtocolID::midi1_0;
}

}  // namespace midikit::io::internal

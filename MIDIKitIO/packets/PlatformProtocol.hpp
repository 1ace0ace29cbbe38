#pragma once

#include <optional>

#include "MIDIKitCore/MIDIIOError.hpp"
#include "MIDIKitIO/manager/CoreMIDIAPIVersion.hpp"
#include "MIDIKitIO/platform/MIDIServiceTypes.hpp"

namespace midikit::io::internal {

/// What the platform calls the protocol.
constexpr MIDIProtocolID platformProtocol(core::MIDIProtocolVersion protocol) {
  return protocol == core::MIDIProtocolVersion::midi1_0 ? MIDIProtocolID::midi1_0 : MIDIProtocolID::midi2_0;
}

/// @throws MIDIIOError `internalInconsistency` if the platform doesn't have the interface
inline void requireInterface(CoreMIDIAPIVersion api, PlatformVersion platform) {
  if (!api.isValidOn(platform)) {
    throw core::MIDIIOError::internalInconsistency("New Core MIDI API is not accessible on this platform.");
  }
}

/// The protocol with which ports and endpoints are made through the newer interface; none for the older one.
/// @throws MIDIIOError as requireInterface()
inline std::optional<MIDIProtocolID> platformProtocol(CoreMIDIAPIVersion api, PlatformVersion platform) {
  requireInterface(api, platform);
  const auto protocol = api.protocol();
  return protocol ? std::optional(platformProtocol(*protocol)) : std::nullopt;
}

}  // namespace midikit::io::internal

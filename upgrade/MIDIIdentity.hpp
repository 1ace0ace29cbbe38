#pragma once

#include <optional>
#include <string>

#include "MIDIKitIO/platform/MIDIService.hpp"

namespace karvex::upgrade {

/// What a MIDI object's properties say of the USB device behind it.
struct MIDIIdentity {
  std::optional<std::string> serialNumber;
  std::optional<bool> offline;
};

/// Reads them from the platform; a property of another type counts as absent. None if the object's properties
/// can't be read, as when it has gone: whoever asks passes over it.
std::optional<MIDIIdentity> readMIDIIdentity(const midikit::io::MIDIService& service,
                                             midikit::io::MIDIObjectRef object);

}  // namespace karvex::upgrade

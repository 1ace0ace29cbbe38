#pragma once

#include <array>

#include "MIDIKitCore/numbers/UInt.hpp"
#include "MIDIKitCore/sysex/SysExEvents.hpp"

namespace midikit::core {

/// What a device tells of itself in an identity reply.
struct DeviceIdentity {
  SysExManufacturer manufacturer;
  UInt14 family;
  UInt14 model;
  /// The software revision, in a format of the device's own.
  std::array<UInt7, 4> revision;
};

/// Asks the device with that ID, or all of them (0x7F), who it is: Identity Request of the MIDI 1.0
/// specification.
UniversalSysEx7 identityRequest(UInt7 deviceID);

/// The answer: Identity Reply of the MIDI 1.0 specification.
UniversalSysEx7 identityReply(UInt7 deviceID, const DeviceIdentity& identity);

}  // namespace midikit::core

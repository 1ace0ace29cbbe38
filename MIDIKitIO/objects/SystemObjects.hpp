#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "MIDIKitIO/objects/MIDIDevice.hpp"
#include "MIDIKitIO/objects/MIDIEndpoint.hpp"
#include "MIDIKitIO/objects/MIDIEntity.hpp"
#include "MIDIKitIO/platform/MIDIService.hpp"

/// The objects that the platform lists at the moment of the call, on the calling thread. No manager is
/// needed, and nothing fails: an object whose properties can't be read is there all the same, with empty
/// texts and the unique ID 0. For every call:
///
/// Thread-safe: yes.
/// Realtime-safe: no, it asks the service and allocates.
namespace midikit::io {

/// All devices, in the platform's order.
std::vector<MIDIDevice> systemDevices(const MIDIService& service);
/// All that the program can listen to, in the platform's order.
std::vector<MIDIOutputEndpoint> systemSources(const MIDIService& service);
/// All that the program can send into, in the platform's order.
std::vector<MIDIInputEndpoint> systemDestinations(const MIDIService& service);

/// The first source with that unique ID.
std::optional<MIDIObjectRef> findSource(const MIDIService& service, std::int32_t uniqueID);
/// The first destination with that unique ID.
std::optional<MIDIObjectRef> findDestination(const MIDIService& service, std::int32_t uniqueID);

/// @name The record of one object, whatever the reference is of
/// @{
MIDIDevice makeDevice(const MIDIService& service, MIDIObjectRef ref);
MIDIEntity makeEntity(const MIDIService& service, MIDIObjectRef ref);
MIDIInputEndpoint makeInputEndpoint(const MIDIService& service, MIDIObjectRef ref);
MIDIOutputEndpoint makeOutputEndpoint(const MIDIService& service, MIDIObjectRef ref);
/// @}

}  // namespace midikit::io

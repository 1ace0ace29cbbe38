#pragma once

#include <string_view>
#include <vector>

#include "MIDIKitIO/platform/MIDIServiceTypes.hpp"
#include "MIDIKitIO/platform/engine/MIDIObject.hpp"
#include "MIDIKitIO/platform/engine/MIDISetup.hpp"

/// The raw messages about a setup, as the platform numbers and fills them.
namespace midikit::io::engine {

MIDINotification setupChangedMessage();
MIDINotification propertyChangedMessage(const MIDIObject& object, std::string_view key);
MIDINotification thruConnectionChangedMessage();

/// The messages about an object, and all below it, that has come: one `added` for each, parents first.
std::vector<MIDINotification> addedMessages(const MIDISetup& setup, MIDIObjectRef object);

/// The messages about an object, and all below it, that goes: one `removed` for each, children first. To be
/// made before it goes.
std::vector<MIDINotification> removedMessages(const MIDISetup& setup, MIDIObjectRef object);

}  // namespace midikit::io::engine

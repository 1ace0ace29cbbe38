#pragma once

#include <string_view>
#include <vector>

#include "MIDIKitIO/platform/MIDIServiceTypes.hpp"
#include "rig/midi/MidiObject.hpp"
#include "rig/midi/MidiSetup.hpp"

/// The raw messages about a setup, as the platform numbers and fills them.
namespace karvex::rig {

midikit::io::MIDINotification setupChangedMessage();
midikit::io::MIDINotification propertyChangedMessage(const MidiObject& object, std::string_view key);
midikit::io::MIDINotification thruConnectionChangedMessage();

/// The messages about an object, and all below it, that has come: one `added` for each, parents first, and
/// one `setupChanged` behind them.
std::vector<midikit::io::MIDINotification> addedMessages(const MidiSetup& setup,
                                                         midikit::io::MIDIObjectRef object);

/// The messages about an object, and all below it, that goes: one `removed` for each, children first, and one
/// `setupChanged` behind them. To be made before it goes.
std::vector<midikit::io::MIDINotification> removedMessages(const MidiSetup& setup,
                                                           midikit::io::MIDIObjectRef object);

}  // namespace karvex::rig

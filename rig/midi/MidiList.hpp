#pragma once

#include <memory>
#include <variant>

#include "MIDIKitIO/platform/MIDIPacketList.hpp"
#include "MIDIKitIO/platform/MIDIServiceTypes.hpp"

namespace karvex::rig {

/// A list of either generation on its way. Never changed, so all who get it can share it.
using MidiList = std::variant<midikit::io::MIDIPacketList, midikit::io::MIDIEventList>;
using SharedMidiList = std::shared_ptr<const MidiList>;

}  // namespace karvex::rig

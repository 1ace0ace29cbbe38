#pragma once

#include <memory>
#include <variant>

#include "MIDIKitIO/platform/MIDIPacketList.hpp"
#include "MIDIKitIO/platform/MIDIServiceTypes.hpp"

namespace midikit::io::engine {

/// A list of either generation on its way. Never changed, so all who get it can share it.
using MIDIList = std::variant<MIDIPacketList, MIDIEventList>;
using SharedMIDIList = std::shared_ptr<const MIDIList>;

}  // namespace midikit::io::engine

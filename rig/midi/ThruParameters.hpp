#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "MIDIKitIO/platform/MIDIServiceTypes.hpp"
#include "MIDIKitIO/platform/MIDIThruConnectionParams.hpp"

namespace karvex::rig {

/// Parameters that let everything through, without endpoints.
midikit::io::MIDIThruConnectionParams usualThruParameters();

/// Reads a parameter record from its bytes. Nothing when the length doesn't agree with the counts in it, when
/// it has too many endpoints, or when it asks for what this service can't do: anything but endpoints and the
/// five filters.
std::optional<midikit::io::MIDIThruConnectionParams> readThruParameters(std::span<const std::uint8_t> bytes);

bool filtersAnything(const midikit::io::MIDIThruConnectionParams& parameters);

/// The list without the messages that the filters hold back, and without packets that have nothing left.
midikit::io::MIDIEventList filtered(const midikit::io::MIDIEventList& list,
                                    const midikit::io::MIDIThruConnectionParams& parameters);

}  // namespace karvex::rig

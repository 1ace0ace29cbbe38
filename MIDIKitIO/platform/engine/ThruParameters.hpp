#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "MIDIKitIO/platform/MIDIServiceTypes.hpp"
#include "MIDIKitIO/platform/MIDIThruConnectionParams.hpp"

namespace midikit::io::engine {

/// Parameters that let everything through, without endpoints.
MIDIThruConnectionParams usualThruParameters();

/// Reads a parameter record from its bytes. Nothing when the length doesn't agree with the counts in it, when
/// it has too many endpoints, or when it asks for what this service can't do: anything but endpoints and the
/// five filters.
std::optional<MIDIThruConnectionParams> readThruParameters(std::span<const std::uint8_t> bytes);

bool filtersAnything(const MIDIThruConnectionParams& parameters);

/// The list without the messages that the filters hold back, and without packets that have nothing left.
MIDIEventList filtered(const MIDIEventList& list, const MIDIThruConnectionParams& parameters);

}  // namespace midikit::io::engine

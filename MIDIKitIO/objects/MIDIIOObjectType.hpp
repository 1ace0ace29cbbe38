#pragma once

#include <cstdint>

namespace midikit::io {

/// The kinds of objects of the platform's MIDI setup. An input is what the program can send into, an output
/// what it can listen to; the platform calls them destination and source.
enum class MIDIIOObjectType : std::uint8_t { device, entity, inputEndpoint, outputEndpoint };

/// The direction of an endpoint, as seen by the program.
enum class MIDIEndpointType : std::uint8_t { input, output };

}  // namespace midikit::io

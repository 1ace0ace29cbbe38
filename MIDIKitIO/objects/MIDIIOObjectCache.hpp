#pragma once

#include <vector>

#include "MIDIKitIO/objects/MIDIDevice.hpp"
#include "MIDIKitIO/objects/MIDIEndpoint.hpp"

namespace midikit::io {

/// The lists of one moment, by which an object that has just gone can still be named.
struct MIDIIOObjectCache {
  std::vector<MIDIDevice> devices;
  std::vector<MIDIInputEndpoint> inputEndpoints;
  std::vector<MIDIOutputEndpoint> outputEndpoints;
};

}  // namespace midikit::io

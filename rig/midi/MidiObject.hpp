#pragma once

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "MIDIKitIO/platform/MIDIServiceTypes.hpp"

namespace karvex::rig {

/// What an object of the setup is, by the platform's type codes.
enum class MidiObjectKind : std::int32_t { device = 0, entity = 1, source = 2, destination = 3 };

/// One object of the setup. Which lists of children are used depends on the kind.
struct MidiObject {
  midikit::io::MIDIObjectRef ref = 0;
  MidiObjectKind kind = MidiObjectKind::device;
  midikit::io::MIDIObjectRef parent = 0;  ///< 0 for devices and virtual endpoints
  std::vector<midikit::io::MIDIObjectRef> entities;
  std::vector<midikit::io::MIDIObjectRef> sources;
  std::vector<midikit::io::MIDIObjectRef> destinations;

  midikit::io::PropertyDictionary properties;
  /// Keys that are answered with success and nothing.
  std::set<std::string, std::less<>> answeredWithNone;

  bool isEndpoint() const { return kind == MidiObjectKind::source || kind == MidiObjectKind::destination; }
  bool isVirtual() const { return isEndpoint() && parent == 0; }
};

}  // namespace karvex::rig

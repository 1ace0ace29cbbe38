#pragma once

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "MIDIKitIO/platform/MIDIServiceTypes.hpp"

namespace midikit::io::engine {

/// What an object of the setup is, by the platform's type codes.
enum class MIDIObjectKind : std::int32_t { device = 0, entity = 1, source = 2, destination = 3 };

/// One object of the setup. Which lists of children are used depends on the kind.
struct MIDIObject {
  MIDIObjectRef ref = 0;
  MIDIObjectKind kind = MIDIObjectKind::device;
  MIDIObjectRef parent = 0;  ///< 0 for devices and virtual endpoints
  std::vector<MIDIObjectRef> entities;
  std::vector<MIDIObjectRef> sources;
  std::vector<MIDIObjectRef> destinations;

  bool isOwn = false;  ///< a virtual endpoint of this program

  PropertyDictionary properties;
  /// Keys that are answered with success and nothing.
  std::set<std::string, std::less<>> answeredWithNone;

  bool isEndpoint() const { return kind == MIDIObjectKind::source || kind == MIDIObjectKind::destination; }
};

}  // namespace midikit::io::engine

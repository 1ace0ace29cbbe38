#pragma once

#include "MIDIKitIO/platform/MIDIServiceTypes.hpp"

namespace midikit::io::engine {

/// Hands out references. One for a whole service, so that a reference never means two things, whatever its
/// kind. Not locked.
class References {
 public:
  MIDIObjectRef next() { return ++last_; }

 private:
  MIDIObjectRef last_ = 0;
};

}  // namespace midikit::io::engine

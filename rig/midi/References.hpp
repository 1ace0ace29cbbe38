#pragma once

#include "MIDIKitIO/platform/MIDIServiceTypes.hpp"

namespace karvex::rig {

/// Hands out references. One for a whole service, so that a reference never means two things, whatever its
/// kind. Not locked.
class References {
 public:
  midikit::io::MIDIObjectRef next() { return ++last_; }

 private:
  midikit::io::MIDIObjectRef last_ = 0;
};

}  // namespace karvex::rig

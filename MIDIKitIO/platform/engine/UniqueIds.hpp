#pragma once

#include <cstdint>
#include <map>

#include "MIDIKitIO/platform/MIDIServiceTypes.hpp"

namespace midikit::io::engine {

/// Which object has which unique ID. Not locked.
class UniqueIds {
 public:
  /// Gives an object an ID that no other has. The same calls assign the same IDs on every machine.
  std::int32_t assign(MIDIObjectRef object);

  /// Gives an object this ID in place of the one it has. False, and nothing changes, if another object has
  /// it.
  [[nodiscard]] bool take(MIDIObjectRef object, std::int32_t id);

  void release(MIDIObjectRef object);

  /// The object with that ID, or 0.
  MIDIObjectRef owner(std::int32_t id) const;

 private:
  std::map<std::int32_t, MIDIObjectRef> owners_;
  std::map<MIDIObjectRef, std::int32_t> ids_;
  std::uint32_t assigned_ = 0;
};

}  // namespace midikit::io::engine

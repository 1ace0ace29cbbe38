#include "rig/midi/ThruConnectionStore.hpp"

namespace karvex::rig {

using namespace midikit::io;

MIDIObjectRef ThruConnectionStore::add(const std::string& owner, const MIDIThruConnectionParams& parameters) {
  const std::lock_guard lock(mutex_);
  connections_.emplace(++last_, Stored{owner, parameters});
  return last_;
}

bool ThruConnectionStore::remove(MIDIObjectRef connection) {
  const std::lock_guard lock(mutex_);
  return connections_.erase(connection) > 0;
}

std::vector<MIDIObjectRef> ThruConnectionStore::ownedBy(const std::string& owner) const {
  const std::lock_guard lock(mutex_);
  std::vector<MIDIObjectRef> owned;
  for (const auto& [ref, stored] : connections_) {
    if (stored.owner == owner) {
      owned.push_back(ref);
    }
  }
  return owned;
}

std::vector<ThruConnection> ThruConnectionStore::all() const {
  const std::lock_guard lock(mutex_);
  std::vector<ThruConnection> everybodys;
  everybodys.reserve(connections_.size());
  for (const auto& [ref, stored] : connections_) {
    everybodys.push_back({ref, stored.parameters});
  }
  return everybodys;
}

}  // namespace karvex::rig

#include "MIDIKitIO/platform/engine/ThruConnectionStore.hpp"

#include <utility>

namespace midikit::io::engine {

ThruConnectionStore::ThruConnectionStore(const std::vector<Stored>& kept, Keeper keeper)
    : keeper_(std::move(keeper)) {
  for (const auto& stored : kept) {
    connections_.emplace(++last_, stored);
  }
}

void ThruConnectionStore::keep() const {
  if (!keeper_) {
    return;
  }
  std::vector<Stored> all;
  all.reserve(connections_.size());
  for (const auto& [ref, stored] : connections_) {
    all.push_back(stored);
  }
  keeper_(all);
}

MIDIObjectRef ThruConnectionStore::add(const std::string& owner, const MIDIThruConnectionParams& parameters) {
  const std::lock_guard lock(mutex_);
  connections_.emplace(++last_, Stored{owner, parameters});
  keep();
  return last_;
}

bool ThruConnectionStore::remove(MIDIObjectRef connection) {
  const std::lock_guard lock(mutex_);
  const bool wasThere = connections_.erase(connection) > 0;
  if (wasThere) {
    keep();
  }
  return wasThere;
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

}  // namespace midikit::io::engine

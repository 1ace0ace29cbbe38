#include "MIDIKitIO/platform/engine/ThruConnectionStore.hpp"

#include <algorithm>
#include <cstring>
#include <utility>

namespace midikit::io::engine {

bool operator==(const ThruConnectionStore::Stored& left, const ThruConnectionStore::Stored& right) {
  return left.owner == right.owner &&  // The record has no padding.
         std::memcmp(&left.parameters, &right.parameters, sizeof(left.parameters)) == 0;
}

ThruConnectionStore::ThruConnectionStore(Keeper keeper) : keeper_(std::move(keeper)) {
  reload();
}

/// True if something is different then. Connections that are equal in everything are distinguished by their
/// order alone.
bool ThruConnectionStore::adopt(std::vector<Stored> kept) {
  std::map<MIDIObjectRef, Stored> former = std::exchange(connections_, {});
  bool isChanged = former.size() != kept.size();
  for (auto& stored : kept) {
    const auto known = std::ranges::find(former, stored, [](const auto& entry) { return entry.second; });
    const bool isNew = known == former.end();
    connections_.emplace(isNew ? ++last_ : known->first, std::move(stored));
    if (!isNew) {
      former.erase(known);
    }
    isChanged = isChanged || isNew;
  }
  return isChanged;
}

MIDIObjectRef ThruConnectionStore::add(const std::string& owner, const MIDIThruConnectionParams& parameters) {
  const std::lock_guard lock(mutex_);
  const Stored added{owner, parameters};
  if (keeper_) {
    adopt(keeper_([&added](std::vector<Stored>& all) { all.push_back(added); }));
  } else {
    connections_.emplace(++last_, added);
  }
  return last_;  // It is the last one, also of those that others have added meanwhile.
}

bool ThruConnectionStore::remove(MIDIObjectRef connection) {
  const std::lock_guard lock(mutex_);
  const auto removed = connections_.extract(connection);
  if (!removed.empty() && keeper_) {
    adopt(keeper_([&removed](std::vector<Stored>& all) {
      if (const auto found = std::ranges::find(all, removed.mapped()); found != all.end()) {
        all.erase(found);
      }
    }));
  }
  return !removed.empty();
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

void ThruConnectionStore::reload() {
  const bool isChanged = [this] {
    const std::lock_guard lock(mutex_);
    return keeper_ && adopt(keeper_([](std::vector<Stored>&) {}));
  }();
  if (isChanged) {
    tellObservers();
  }
}

void ThruConnectionStore::setForwarding(bool isForwarding) {
  if (isForwarding_.exchange(isForwarding) != isForwarding) {
    tellObservers();
  }
}

std::function<void()> ThruConnectionStore::observe(Observer observer) {
  const std::lock_guard lock(observersMutex_);
  const int number = ++lastObserver_;
  observers_.emplace(number, std::move(observer));
  return [this, number] {
    const std::lock_guard end(observersMutex_);
    observers_.erase(number);
  };
}

void ThruConnectionStore::tellObservers() {
  const std::lock_guard lock(observersMutex_);
  for (const auto& [number, observer] : observers_) {
    observer();
  }
}

}  // namespace midikit::io::engine

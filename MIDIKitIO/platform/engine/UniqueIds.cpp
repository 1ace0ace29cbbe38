#include "MIDIKitIO/platform/engine/UniqueIds.hpp"

namespace midikit::io::engine {

std::int32_t UniqueIds::assign(MIDIObjectRef object) {
  // An odd factor goes through all 32-bit numbers before one comes again; this one spreads them, so that IDs
  // look as scattered, and as often negative, as the platform's.
  constexpr std::uint32_t spread = 2654435761U;
  while (true) {
    const auto id = static_cast<std::int32_t>(++assigned_ * spread);
    if (id != 0 && take(object, id)) {
      return id;
    }
  }
}

bool UniqueIds::take(MIDIObjectRef object, std::int32_t id) {
  const auto [place, isNew] = owners_.try_emplace(id, object);
  if (!isNew) {
    return place->second == object;
  }
  if (const auto former = ids_.find(object); former != ids_.end()) {
    owners_.erase(former->second);
  }
  ids_[object] = id;
  return true;
}

void UniqueIds::release(MIDIObjectRef object) {
  if (const auto id = ids_.extract(object); !id.empty()) {
    owners_.erase(id.mapped());
  }
}

MIDIObjectRef UniqueIds::owner(std::int32_t id) const {
  const auto found = owners_.find(id);
  return found != owners_.end() ? found->second : 0;
}

}  // namespace midikit::io::engine

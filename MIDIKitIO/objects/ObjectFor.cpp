#include "MIDIKitIO/objects/ObjectFor.hpp"

#include <algorithm>
#include <vector>

#include "MIDIKitIO/objects/SystemObjects.hpp"

namespace midikit::io {
namespace {

template <class Object, class Make>
AnyMIDIIOObject cachedOr(const std::vector<Object>* cached, MIDIObjectRef ref, Make make) {
  if (cached != nullptr) {
    const auto found = std::find_if(cached->begin(), cached->end(),
                                    [ref](const Object& object) { return object.coreMIDIObjectRef == ref; });
    if (found != cached->end()) {
      return *found;
    }
  }
  return make(ref);
}

}  // namespace

std::optional<AnyMIDIIOObject> objectFor(const MIDIService& service, MIDIObjectRef ref, std::int32_t typeCode,
                                         const MIDIIOObjectCache* cache) {
  if (ref == 0) {
    return std::nullopt;
  }
  const bool hasCache = cache != nullptr;
  switch (typeCode) {
    case 0:
    case 16:
      return cachedOr(hasCache ? &cache->devices : nullptr, ref,
                      [&](MIDIObjectRef device) { return makeDevice(service, device); });
    case 1:
    case 17:
      return makeEntity(service, ref);
    case 2:
    case 18:
      return cachedOr(hasCache ? &cache->outputEndpoints : nullptr, ref,
                      [&](MIDIObjectRef source) { return makeOutputEndpoint(service, source); });
    case 3:
    case 19:
      return cachedOr(hasCache ? &cache->inputEndpoints : nullptr, ref,
                      [&](MIDIObjectRef destination) { return makeInputEndpoint(service, destination); });
    default:
      return std::nullopt;
  }
}

}  // namespace midikit::io

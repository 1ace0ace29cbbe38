#pragma once

#include <cstdint>
#include <optional>

#include "MIDIKitIO/objects/AnyMIDIIOObject.hpp"
#include "MIDIKitIO/objects/MIDIIOObjectCache.hpp"

namespace midikit::io {

/// The object with that reference and the platform's type code: 0 device, 1 entity, 2 source, 3 destination,
/// and the same plus 16 for objects outside of the computer. None for the reference 0 and for every other
/// code. Devices and endpoints come from the cache, if one is given and has them; otherwise the record is
/// read from the platform, and a gone object has an empty name then and the unique ID 0.
std::optional<AnyMIDIIOObject> objectFor(const MIDIService& service, MIDIObjectRef ref, std::int32_t typeCode,
                                         const MIDIIOObjectCache* cache = nullptr);

}  // namespace midikit::io

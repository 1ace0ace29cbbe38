#include "MIDIKitIO/packets/ConnectionNumber.hpp"

#include <string_view>

#include "MIDIKitIO/objects/PropertyAccess.hpp"
#include "MIDIKitIO/objects/SystemObjects.hpp"
#include "MIDIKitIO/platform/MIDIPropertyKeys.hpp"

namespace midikit::io {
namespace {

/// Whether the platform has `expected` there now. A text that can't be read counts as an empty one.
bool readsAs(const std::string& expected, const MIDIService& service, MIDIObjectRef object,
             std::string_view key, std::optional<std::string>& memory) {
  if (service.MIDIObjectGetStringProperty(object, key, memory) != noErr || !memory) {
    return expected.empty();
  }
  return *memory == expected;
}

}  // namespace

MIDIPacketSource ConnectionNumber::source(const MIDIService& service) const {
  const auto uniqueID = integerProperty(service, reference_, kMIDIPropertyUniqueID);
  if (uniqueID == 0) {
    return nullptr;
  }
  return last_.modify([&](LastReading& last) {
    const auto& record = last.record;
    const bool isSame =
        record && record->uniqueID == uniqueID &&
        readsAs(record->name, service, reference_, kMIDIPropertyName, last.name) &&
        readsAs(record->displayName, service, reference_, kMIDIPropertyDisplayName, last.displayName);
    if (!isSame) {
      last.record = std::make_shared<const MIDIOutputEndpoint>(makeOutputEndpoint(service, reference_));
    }
    return last.record;
  });
}

}  // namespace midikit::io

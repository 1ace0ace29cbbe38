#include "upgrade/MIDIIdentity.hpp"

#include "MIDIKitIO/platform/MIDIPropertyKeys.hpp"

namespace karvex::upgrade {
namespace {

using midikit::io::PropertyDictionary;

template <typename T>
const T* valueOf(const PropertyDictionary& properties, std::string_view key) {
  const auto property = properties.find(std::string(key));
  return property == properties.end() ? nullptr : std::get_if<T>(&property->second);
}

/// The platform has no type for yes and no; any integer but 0 and 1 is something else.
std::optional<bool> truthOf(const std::int32_t* value) {
  if (value == nullptr || (*value != 0 && *value != 1)) {
    return std::nullopt;
  }
  return *value == 1;
}

}  // namespace

std::optional<MIDIIdentity> readMIDIIdentity(const midikit::io::MIDIService& service,
                                             midikit::io::MIDIObjectRef object) {
  PropertyDictionary properties;
  if (service.MIDIObjectGetProperties(object, properties, false) != midikit::io::noErr) {
    return std::nullopt;
  }
  MIDIIdentity identity;
  if (const auto* serialNumber = valueOf<std::string>(properties, midikit::io::serialNumberPropertyKey)) {
    identity.serialNumber = *serialNumber;
  }
  identity.offline = truthOf(valueOf<std::int32_t>(properties, midikit::io::kMIDIPropertyOffline));
  return identity;
}

}  // namespace karvex::upgrade

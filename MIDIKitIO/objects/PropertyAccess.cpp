#include "MIDIKitIO/objects/PropertyAccess.hpp"

#include <optional>
#include <utility>

#include "MIDIKitInternals/Text.hpp"

namespace midikit::io {

using core::MIDIIOError;

internals::Result<std::string, MIDIIOError> readTextProperty(const MIDIService& service, MIDIObjectRef object,
                                                             std::string_view key) {
  std::optional<std::string> text;
  const auto status = service.MIDIObjectGetStringProperty(object, key, text);
  if (status != noErr) {
    return MIDIIOError::osStatus(status);
  }
  if (!text) {
    return MIDIIOError::readError("Got nil while reading MIDIEndpointRef property value " +
                                  internals::quoted(key));
  }
  return *std::move(text);
}

std::string textProperty(const MIDIService& service, MIDIObjectRef object, std::string_view key) {
  auto text = readTextProperty(service, object, key);
  if (!text) {
    throw std::move(text).error();
  }
  return *std::move(text);
}

std::int32_t integerProperty(const MIDIService& service, MIDIObjectRef object, std::string_view key) {
  std::int32_t value = 0;
  static_cast<void>(service.MIDIObjectGetIntegerProperty(object, key, value));
  return value;
}

PropertyDictionary dictionaryProperty(const MIDIService& service, MIDIObjectRef object,
                                      std::string_view key) {
  std::optional<PropertyDictionary> dictionary;
  core::checkStatus(service.MIDIObjectGetDictionaryProperty(object, key, dictionary));
  if (!dictionary) {
    throw MIDIIOError::readError("Got nil while reading MIDIEndpointRef property list.");
  }
  return *std::move(dictionary);
}

}  // namespace midikit::io

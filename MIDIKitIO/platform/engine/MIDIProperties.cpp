#include <utility>

#include "MIDIKitIO/platform/MIDIPropertyKeys.hpp"
#include "MIDIKitIO/platform/engine/MIDISetup.hpp"

// The properties' portion of MIDISetup.

namespace midikit::io::engine {

namespace {

const PropertyValue* valueOf(const MIDIObject& object, std::string_view key) {
  const auto found = object.properties.find(key);
  return found != object.properties.end() ? &found->second : nullptr;
}

std::string textOf(const MIDIObject& object, std::string_view key) {
  const auto* value = valueOf(object, key);
  const auto* text = value != nullptr ? std::get_if<std::string>(value) : nullptr;
  return text != nullptr ? *text : std::string();
}

/// Keeps the kind of the value that is there, as anyone who sets a property must.
template <typename Value>
bool hasOtherKind(const MIDIObject& object, std::string_view key) {
  const auto* value = valueOf(object, key);
  return value != nullptr && !std::holds_alternative<Value>(*value);
}

}  // namespace

/// The cases have their type ahead of them: in a template, g++ 12 crashes without.
template <typename Value>
OSStatus MIDISetup::get(Ref object, std::string_view key, std::optional<Value>& out) const {
  const auto* found = find(object);
  if (found == nullptr) {
    return statusOf(MIDIOSStatus::Named::objectNotFound);
  }
  if (found->answeredWithNone.contains(key)) {
    out.reset();
    return noErr;
  }
  const auto* value = valueOf(*found, key);
  if (value == nullptr) {
    return statusOf(MIDIOSStatus::Named::unknownProperty);
  }
  const auto* wanted = std::get_if<Value>(value);
  if (wanted == nullptr) {
    return statusOf(MIDIOSStatus::Named::wrongPropertyType);
  }
  out = *wanted;
  return noErr;
}

OSStatus MIDISetup::stringProperty(Ref object, std::string_view key, std::optional<std::string>& out) const {
  return get(object, key, out);
}

OSStatus MIDISetup::dictionaryProperty(Ref object, std::string_view key,
                                       std::optional<PropertyDictionary>& out) const {
  return get(object, key, out);
}

OSStatus MIDISetup::integerProperty(Ref object, std::string_view key, std::int32_t& out) const {
  std::optional<std::int32_t> value;
  const OSStatus result = get(object, key, value);
  if (value) {
    out = *value;
  }
  return result;
}

OSStatus MIDISetup::properties(Ref object, PropertyDictionary& out, bool deep) const {
  const auto* found = find(object);
  if (found == nullptr) {
    return statusOf(MIDIOSStatus::objectNotFound);
  }
  out = deep ? deepProperties(*found) : found->properties;
  return noErr;
}

/// The children stand under "entities", "sources" and "destinations", each under its place in the list.
PropertyDictionary MIDISetup::deepProperties(const MIDIObject& object) const {
  PropertyDictionary all = object.properties;
  const auto addChildren = [&](const char* key, const std::vector<Ref>& children) {
    PropertyDictionary list;
    for (const Ref child : children) {
      list.emplace(std::to_string(list.size()), deepProperties(objects_.at(child)));
    }
    if (!list.empty()) {
      all.insert_or_assign(key, std::move(list));
    }
  };
  addChildren("entities", object.entities);
  addChildren("sources", object.sources);
  addChildren("destinations", object.destinations);
  return all;
}

OSStatus MIDISetup::setStringProperty(Ref object, std::string_view key, std::string_view value) {
  const auto* found = find(object);
  if (found == nullptr) {
    return statusOf(MIDIOSStatus::objectNotFound);
  }
  if (hasOtherKind<std::string>(*found, key)) {
    return statusOf(MIDIOSStatus::wrongPropertyType);
  }
  return setProperty(object, key, std::string(value));
}

OSStatus MIDISetup::setIntegerProperty(Ref object, std::string_view key, std::int32_t value) {
  const auto* found = find(object);
  if (found == nullptr) {
    return statusOf(MIDIOSStatus::objectNotFound);
  }
  if (hasOtherKind<std::int32_t>(*found, key)) {
    return statusOf(MIDIOSStatus::wrongPropertyType);
  }
  return setProperty(object, key, value);
}

OSStatus MIDISetup::setProperty(Ref object, std::string_view key, PropertyValue value) {
  const auto place = objects_.find(object);
  if (place == objects_.end()) {
    return statusOf(MIDIOSStatus::objectNotFound);
  }
  MIDIObject& changed = place->second;
  if (key == kMIDIPropertyUniqueID) {
    const auto* id = std::get_if<std::int32_t>(&value);
    if (id == nullptr) {
      return statusOf(MIDIOSStatus::wrongPropertyType);
    }
    if (!uniqueIds_.take(object, *id)) {
      return statusOf(MIDIOSStatus::idNotUnique);
    }
  }
  const bool showsName = key == kMIDIPropertyName && changed.isEndpoint() &&
                         textOf(changed, kMIDIPropertyDisplayName) == usualDisplayName(changed);
  changed.answeredWithNone.erase(std::string(key));
  changed.properties.insert_or_assign(std::string(key), std::move(value));
  if (showsName) {
    changed.properties.insert_or_assign(std::string(kMIDIPropertyDisplayName), usualDisplayName(changed));
  }
  return noErr;
}

OSStatus MIDISetup::removeProperty(Ref object, std::string_view key) {
  const auto place = objects_.find(object);
  if (place == objects_.end()) {
    return statusOf(MIDIOSStatus::objectNotFound);
  }
  if (place->second.properties.erase(std::string(key)) == 0) {
    return statusOf(MIDIOSStatus::unknownProperty);
  }
  if (key == kMIDIPropertyUniqueID) {
    uniqueIds_.release(object);
  }
  return noErr;
}

OSStatus MIDISetup::answerWithNone(Ref object, std::string_view key) {
  const auto place = objects_.find(object);
  if (place == objects_.end()) {
    return statusOf(MIDIOSStatus::objectNotFound);
  }
  place->second.answeredWithNone.emplace(key);
  return noErr;
}

/// An endpoint is shown as its device's name and its own, unless its own begins with the device's.
std::string MIDISetup::usualDisplayName(const MIDIObject& endpoint) const {
  auto own = textOf(endpoint, kMIDIPropertyName);
  const auto* entity = find(endpoint.parent);
  const auto* device = entity != nullptr ? find(entity->parent) : nullptr;
  const auto above = device != nullptr ? textOf(*device, kMIDIPropertyName) : std::string();
  if (above.empty() || own.starts_with(above)) {
    return own;
  }
  return own.empty() ? above : above + " " + own;
}

}  // namespace midikit::io::engine

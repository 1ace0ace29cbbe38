#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "MIDIKitIO/objects/MIDIIOProperty.hpp"
#include "MIDIKitIO/platform/MIDIService.hpp"

namespace midikit::io {

/// The value of the object's property for people, read from the platform at the moment of the call. Never
/// fails: what can't be read has a text too, by the property's form.
///
/// | Form | Text | Of a value that isn't there or is of another kind |
/// |---|---|---|
/// | text | the value | "-" |
/// | number | decimal | "0" |
/// | yesNo | "Yes" for exactly 1, else "No" | "No" |
/// | bitMask | "0b" and the 32-bit word's binary digits, at least 8 | "0b00000000" |
/// | protocol | "MIDI 1.0" for exactly 1, else "MIDI 2.0" | "MIDI 2.0" |
/// | dictionary | as dictionaryText() returns it | "-" |
/// | fileURL | the value as a path, as fileURLText() returns it | "-" |
///
/// On a platform that is too old for the property, the text says so.
std::string propertyText(const MIDIService& service, MIDIObjectRef object, MIDIIOProperty property);

/// Label and text of all properties in their order, or, if `onlyRelevant`, of those that an object of that
/// type can have.
std::vector<std::pair<std::string_view, std::string>> properties(const MIDIService& service,
                                                                 MIDIObjectRef object, MIDIIOObjectType type,
                                                                 bool onlyRelevant);

/// {"a key": 1, "bank": {"name": "say \"hi\""}}: keys in the order of their bytes, double quotes and
/// backslashes of keys and texts after a backslash.
std::string dictionaryText(const PropertyDictionary& dictionary);

/// The absolute file URL (RFC 8089) of a path, percent-encoded. A relative path counts from the process's
/// working directory. Empty if the path is, or if that directory can't be had.
std::string fileURLText(std::string_view path);

/// What the records of the platform's objects have alike: access to the properties of the object that the
/// record was made from. `Object` has `coreMIDIObjectRef` and `objectType`.
template <class Object>
// A private constructor would keep records from being aggregates.
// NOLINTNEXTLINE(bugprone-crtp-constructor-accessibility)
struct MIDIIOObjectProperties {
  /// As io::propertyText.
  std::string propertyText(const MIDIService& service, MIDIIOProperty property) const {
    return io::propertyText(service, self().coreMIDIObjectRef, property);
  }
  /// As io::properties.
  std::vector<std::pair<std::string_view, std::string>> properties(const MIDIService& service,
                                                                   bool onlyRelevant = false) const {
    return io::properties(service, self().coreMIDIObjectRef, self().objectType, onlyRelevant);
  }

 private:
  const Object& self() const { return static_cast<const Object&>(*this); }
};

}  // namespace midikit::io

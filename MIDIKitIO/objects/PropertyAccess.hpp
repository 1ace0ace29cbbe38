#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "MIDIKitCore/MIDIIOError.hpp"
#include "MIDIKitIO/platform/MIDIService.hpp"
#include "MIDIKitInternals/Result.hpp"

/// One property of one object, read from the platform at the moment of the call, on the calling thread. The
/// keys are those of MIDIPropertyKeys.hpp. For every call:
///
/// Thread-safe: yes.
/// Realtime-safe: no, it asks the service and allocates.
namespace midikit::io {

/// The text, or why it can't be had: `osStatus`, or `readError` for a text that the platform returns as none.
internals::Result<std::string, core::MIDIIOError> readTextProperty(const MIDIService& service,
                                                                   MIDIObjectRef object,
                                                                   std::string_view key);

/// @throws MIDIIOError as readTextProperty() returns it.
std::string textProperty(const MIDIService& service, MIDIObjectRef object, std::string_view key);

/// 0 if the object has no such property, or one of another kind.
std::int32_t integerProperty(const MIDIService& service, MIDIObjectRef object, std::string_view key);

/// @throws MIDIIOError `osStatus`, or `readError` for a dictionary that the platform returns as none.
PropertyDictionary dictionaryProperty(const MIDIService& service, MIDIObjectRef object, std::string_view key);

}  // namespace midikit::io

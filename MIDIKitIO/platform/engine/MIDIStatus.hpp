#pragma once

#include "MIDIKitIO/platform/MIDIServiceTypes.hpp"

/// The statuses that the virtual MIDI service answers with: the platform's numbers.
namespace midikit::io::engine::status {

inline constexpr OSStatus invalidClient = -10830;
inline constexpr OSStatus invalidPort = -10831;
inline constexpr OSStatus wrongEndpointType = -10832;
inline constexpr OSStatus noConnection = -10833;
inline constexpr OSStatus unknownEndpoint = -10834;
inline constexpr OSStatus unknownProperty = -10835;
inline constexpr OSStatus wrongPropertyType = -10836;
inline constexpr OSStatus objectNotFound = -10842;
inline constexpr OSStatus idNotUnique = -10843;
inline constexpr OSStatus notPermitted = -10844;
/// Also for operations that the service's generation of the interface doesn't have.
inline constexpr OSStatus unknownError = -10845;
/// An argument that makes no sense.
inline constexpr OSStatus parameterError = -50;

}  // namespace midikit::io::engine::status

#include "MIDIKitCore/MIDIOSStatus.hpp"

#include <cstdlib>

namespace midikit::core {
namespace {

const char* textOf(MIDIOSStatus::Named status) {
  using enum MIDIOSStatus::Named;
  switch (status) {
    case invalidClient:
      return "An invalid MIDIClientRef was passed. (kMIDIInvalidClient)";
    case invalidPort:
      return "An invalid MIDIPortRef was passed. (kMIDIInvalidPort)";
    case wrongEndpointType:
      return "A source endpoint was passed to a function expecting a destination, or vice versa. "
             "(kMIDIWrongEndpointType)";
    case noConnection:
      return "Attempt to close a non-existent connection. (kMIDINoConnection)";
    case unknownEndpoint:
      return "An invalid MIDIEndpointRef was passed. (kMIDIUnknownEndpoint)";
    case unknownProperty:
      return "Attempt to query a property not set on the object. (kMIDIUnknownProperty)";
    case wrongPropertyType:
      return "Attempt to set a property with a value not of the correct type. (kMIDIWrongPropertyType)";
    case noCurrentSetup:
      return "Internal error; there is no current MIDI setup object. (kMIDINoCurrentSetup)";
    case messageSendErr:
      return "Communication with MIDIServer failed. (kMIDIMessageSendErr)";
    case serverStartErr:
      return "Unable to start MIDIServer. (kMIDIServerStartErr)";
    case setupFormatErr:
      return "Unable to read the saved state. (kMIDISetupFormatErr)";
    case wrongThread:
      return "A driver is calling a non-I/O function in the server from a thread other than the server's "
             "main thread. (kMIDIWrongThread)";
    case objectNotFound:
      return "The requested object does not exist. (kMIDIObjectNotFound)";
    case idNotUnique:
      return "Attempt to set a non-unique kMIDIPropertyUniqueID on an object. (kMIDIIDNotUnique)";
    case notPermitted:
      return "The process does not have privileges for the requested operation. (kMIDINotPermitted)";
    case unknownError:
      return "Internal error; unable to perform the requested operation. (kMIDIUnknownError)";
    case ioError:
      return "I/O Error. (kMIDIMsgIOError)";
    case internalError:
      return "Internal OSStatus error -50.";
  }
  std::abort();
}

}  // namespace

std::string MIDIOSStatus::text() const {
  const auto known = named();
  return known ? textOf(*known) : "Unknown OSStatus error: " + std::to_string(number());
}

}  // namespace midikit::core

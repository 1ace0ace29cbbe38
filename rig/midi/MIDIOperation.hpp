#pragma once

#include <cstddef>

namespace karvex::rig {

/// The operations of MIDIService, in its order, so that calls can be counted and made to fail.
enum class MIDIOperation {
  clientCreateWithBlock,
  getNumberOfDevices,
  getDevice,
  getNumberOfSources,
  getSource,
  getNumberOfDestinations,
  getDestination,
  deviceGetNumberOfEntities,
  deviceGetEntity,
  entityGetNumberOfSources,
  entityGetSource,
  entityGetNumberOfDestinations,
  entityGetDestination,
  entityGetDevice,
  endpointGetEntity,
  objectGetStringProperty,
  objectGetIntegerProperty,
  objectGetDictionaryProperty,
  objectGetProperties,
  objectSetStringProperty,
  objectSetIntegerProperty,
  inputPortCreateWithProtocol,
  inputPortCreateWithBlock,
  outputPortCreate,
  portDispose,
  portConnectSource,
  portDisconnectSource,
  destinationCreateWithProtocol,
  destinationCreateWithBlock,
  sourceCreateWithProtocol,
  sourceCreate,
  endpointDispose,
  send,
  sendEventList,
  received,
  receivedEventList,
  thruConnectionParamsInitialize,
  thruConnectionCreate,
  thruConnectionDispose,
  thruConnectionFind,
};

inline constexpr std::size_t midiOperationCount =
    static_cast<std::size_t>(MIDIOperation::thruConnectionFind) + 1;

}  // namespace karvex::rig

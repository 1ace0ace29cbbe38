#include "rig/midi/CountedMidiService.hpp"

namespace karvex::rig {

using namespace midikit::io;

OSStatus CountedMidiService::MIDIClientCreateWithBlock(const std::string& name, Ref& outClient,
                                                       MIDINotifyBlock block) {
  return pass(MIDIOperation::clientCreateWithBlock, 0,
              [&] { return service_->MIDIClientCreateWithBlock(name, outClient, std::move(block)); });
}

std::size_t CountedMidiService::MIDIGetNumberOfDevices() const {
  return pass(MIDIOperation::getNumberOfDevices, 0, [&] { return service_->MIDIGetNumberOfDevices(); });
}

MIDIObjectRef CountedMidiService::MIDIGetDevice(std::size_t index) const {
  return pass(MIDIOperation::getDevice, 0, [&] { return service_->MIDIGetDevice(index); });
}

std::size_t CountedMidiService::MIDIGetNumberOfSources() const {
  return pass(MIDIOperation::getNumberOfSources, 0, [&] { return service_->MIDIGetNumberOfSources(); });
}

MIDIObjectRef CountedMidiService::MIDIGetSource(std::size_t index) const {
  return pass(MIDIOperation::getSource, 0, [&] { return service_->MIDIGetSource(index); });
}

std::size_t CountedMidiService::MIDIGetNumberOfDestinations() const {
  return pass(MIDIOperation::getNumberOfDestinations, 0,
              [&] { return service_->MIDIGetNumberOfDestinations(); });
}

MIDIObjectRef CountedMidiService::MIDIGetDestination(std::size_t index) const {
  return pass(MIDIOperation::getDestination, 0, [&] { return service_->MIDIGetDestination(index); });
}

std::size_t CountedMidiService::MIDIDeviceGetNumberOfEntities(Ref device) const {
  return pass(MIDIOperation::deviceGetNumberOfEntities, device,
              [&] { return service_->MIDIDeviceGetNumberOfEntities(device); });
}

MIDIObjectRef CountedMidiService::MIDIDeviceGetEntity(Ref device, std::size_t index) const {
  return pass(MIDIOperation::deviceGetEntity, device,
              [&] { return service_->MIDIDeviceGetEntity(device, index); });
}

std::size_t CountedMidiService::MIDIEntityGetNumberOfSources(Ref entity) const {
  return pass(MIDIOperation::entityGetNumberOfSources, entity,
              [&] { return service_->MIDIEntityGetNumberOfSources(entity); });
}

MIDIObjectRef CountedMidiService::MIDIEntityGetSource(Ref entity, std::size_t index) const {
  return pass(MIDIOperation::entityGetSource, entity,
              [&] { return service_->MIDIEntityGetSource(entity, index); });
}

std::size_t CountedMidiService::MIDIEntityGetNumberOfDestinations(Ref entity) const {
  return pass(MIDIOperation::entityGetNumberOfDestinations, entity,
              [&] { return service_->MIDIEntityGetNumberOfDestinations(entity); });
}

MIDIObjectRef CountedMidiService::MIDIEntityGetDestination(Ref entity, std::size_t index) const {
  return pass(MIDIOperation::entityGetDestination, entity,
              [&] { return service_->MIDIEntityGetDestination(entity, index); });
}

OSStatus CountedMidiService::MIDIEntityGetDevice(Ref entity, Ref& outDevice) const {
  return pass(MIDIOperation::entityGetDevice, entity,
              [&] { return service_->MIDIEntityGetDevice(entity, outDevice); });
}

OSStatus CountedMidiService::MIDIEndpointGetEntity(Ref endpoint, Ref& outEntity) const {
  return pass(MIDIOperation::endpointGetEntity, endpoint,
              [&] { return service_->MIDIEndpointGetEntity(endpoint, outEntity); });
}

OSStatus CountedMidiService::MIDIObjectGetStringProperty(Ref object, std::string_view key,
                                                         std::optional<std::string>& out) const {
  return pass(MIDIOperation::objectGetStringProperty, object,
              [&] { return service_->MIDIObjectGetStringProperty(object, key, out); });
}

OSStatus CountedMidiService::MIDIObjectGetIntegerProperty(Ref object, std::string_view key,
                                                          std::int32_t& out) const {
  return pass(MIDIOperation::objectGetIntegerProperty, object,
              [&] { return service_->MIDIObjectGetIntegerProperty(object, key, out); });
}

OSStatus CountedMidiService::MIDIObjectGetDictionaryProperty(Ref object, std::string_view key,
                                                             std::optional<PropertyDictionary>& out) const {
  return pass(MIDIOperation::objectGetDictionaryProperty, object,
              [&] { return service_->MIDIObjectGetDictionaryProperty(object, key, out); });
}

OSStatus CountedMidiService::MIDIObjectGetProperties(Ref object, PropertyDictionary& out, bool deep) const {
  return pass(MIDIOperation::objectGetProperties, object,
              [&] { return service_->MIDIObjectGetProperties(object, out, deep); });
}

OSStatus CountedMidiService::MIDIObjectSetStringProperty(Ref object, std::string_view key,
                                                         std::string_view value) {
  return pass(MIDIOperation::objectSetStringProperty, object,
              [&] { return service_->MIDIObjectSetStringProperty(object, key, value); });
}

OSStatus CountedMidiService::MIDIObjectSetIntegerProperty(Ref object, std::string_view key,
                                                          std::int32_t value) {
  return pass(MIDIOperation::objectSetIntegerProperty, object,
              [&] { return service_->MIDIObjectSetIntegerProperty(object, key, value); });
}

OSStatus CountedMidiService::MIDIInputPortCreateWithProtocol(Ref client, const std::string& name,
                                                             MIDIProtocolID protocol, Ref& outPort,
                                                             MIDIReceiveBlock block) {
  return pass(MIDIOperation::inputPortCreateWithProtocol, client, [&] {
    return service_->MIDIInputPortCreateWithProtocol(client, name, protocol, outPort, std::move(block));
  });
}

OSStatus CountedMidiService::MIDIInputPortCreateWithBlock(Ref client, const std::string& name, Ref& outPort,
                                                          MIDIReadBlock block) {
  return pass(MIDIOperation::inputPortCreateWithBlock, client, [&] {
    return service_->MIDIInputPortCreateWithBlock(client, name, outPort, std::move(block));
  });
}

OSStatus CountedMidiService::MIDIOutputPortCreate(Ref client, const std::string& name, Ref& outPort) {
  return pass(MIDIOperation::outputPortCreate, client,
              [&] { return service_->MIDIOutputPortCreate(client, name, outPort); });
}

OSStatus CountedMidiService::MIDIPortDispose(Ref port) {
  return pass(MIDIOperation::portDispose, port, [&] { return service_->MIDIPortDispose(port); });
}

OSStatus CountedMidiService::MIDIPortConnectSource(Ref port, Ref source, ConnectionToken token) {
  return pass(MIDIOperation::portConnectSource, port,
              [&] { return service_->MIDIPortConnectSource(port, source, token); });
}

OSStatus CountedMidiService::MIDIPortDisconnectSource(Ref port, Ref source) {
  return pass(MIDIOperation::portDisconnectSource, port,
              [&] { return service_->MIDIPortDisconnectSource(port, source); });
}

OSStatus CountedMidiService::MIDIDestinationCreateWithProtocol(Ref client, const std::string& name,
                                                               MIDIProtocolID protocol, Ref& outEndpoint,
                                                               MIDIReceiveBlock block) {
  return pass(MIDIOperation::destinationCreateWithProtocol, client, [&] {
    return service_->MIDIDestinationCreateWithProtocol(client, name, protocol, outEndpoint, std::move(block));
  });
}

OSStatus CountedMidiService::MIDIDestinationCreateWithBlock(Ref client, const std::string& name,
                                                            Ref& outEndpoint, MIDIReadBlock block) {
  return pass(MIDIOperation::destinationCreateWithBlock, client, [&] {
    return service_->MIDIDestinationCreateWithBlock(client, name, outEndpoint, std::move(block));
  });
}

OSStatus CountedMidiService::MIDISourceCreateWithProtocol(Ref client, const std::string& name,
                                                          MIDIProtocolID protocol, Ref& outEndpoint) {
  return pass(MIDIOperation::sourceCreateWithProtocol, client,
              [&] { return service_->MIDISourceCreateWithProtocol(client, name, protocol, outEndpoint); });
}

OSStatus CountedMidiService::MIDISourceCreate(Ref client, const std::string& name, Ref& outEndpoint) {
  return pass(MIDIOperation::sourceCreate, client,
              [&] { return service_->MIDISourceCreate(client, name, outEndpoint); });
}

OSStatus CountedMidiService::MIDIEndpointDispose(Ref endpoint) {
  return pass(MIDIOperation::endpointDispose, endpoint,
              [&] { return service_->MIDIEndpointDispose(endpoint); });
}

OSStatus CountedMidiService::MIDISend(Ref port, Ref destination, const MIDIPacketList& list) {
  return pass(MIDIOperation::send, port, [&] { return service_->MIDISend(port, destination, list); });
}

OSStatus CountedMidiService::MIDISendEventList(Ref port, Ref destination, const MIDIEventList& list) {
  return pass(MIDIOperation::sendEventList, port,
              [&] { return service_->MIDISendEventList(port, destination, list); });
}

OSStatus CountedMidiService::MIDIReceived(Ref source, const MIDIPacketList& list) {
  return pass(MIDIOperation::received, source, [&] { return service_->MIDIReceived(source, list); });
}

OSStatus CountedMidiService::MIDIReceivedEventList(Ref source, const MIDIEventList& list) {
  return pass(MIDIOperation::receivedEventList, source,
              [&] { return service_->MIDIReceivedEventList(source, list); });
}

void CountedMidiService::MIDIThruConnectionParamsInitialize(MIDIThruConnectionParams& out) const {
  calls_.begin(MIDIOperation::thruConnectionParamsInitialize, 0);
  service_->MIDIThruConnectionParamsInitialize(out);
}

OSStatus CountedMidiService::MIDIThruConnectionCreate(const std::optional<std::string>& ownerID,
                                                      std::span<const std::uint8_t> parameters,
                                                      Ref& outConnection) {
  return pass(MIDIOperation::thruConnectionCreate, 0,
              [&] { return service_->MIDIThruConnectionCreate(ownerID, parameters, outConnection); });
}

OSStatus CountedMidiService::MIDIThruConnectionDispose(Ref connection) {
  return pass(MIDIOperation::thruConnectionDispose, connection,
              [&] { return service_->MIDIThruConnectionDispose(connection); });
}

OSStatus CountedMidiService::MIDIThruConnectionFind(const std::string& ownerID,
                                                    std::vector<std::uint8_t>& outReferences) const {
  return pass(MIDIOperation::thruConnectionFind, 0,
              [&] { return service_->MIDIThruConnectionFind(ownerID, outReferences); });
}

}  // namespace karvex::rig

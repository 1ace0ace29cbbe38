#include <cstring>
#include <utility>

#include "rig/midi/MidiNotifications.hpp"
#include "rig/midi/MidiStatus.hpp"
#include "rig/midi/ThruParameters.hpp"
#include "rig/midi/VirtualMidiService.hpp"

// The portion of VirtualMidiService that has to do with lists: ports, virtual endpoints, delivery and thru
// connections.

namespace karvex::rig {

using namespace midikit::io;

namespace {

bool isProtocol(MIDIProtocolID protocol) {
  return protocol == MIDIProtocolID::midi1_0 || protocol == MIDIProtocolID::midi2_0;
}

SharedMidiList share(MidiList list) {
  return std::make_shared<const MidiList>(std::move(list));
}

void close(const std::shared_ptr<MidiReceiver>& receiver) {
  if (receiver != nullptr) {
    receiver->close();
  }
}

}  // namespace

/// Whether the operations with protocols may be used, and with this one.
OSStatus VirtualMidiService::checkProtocol(MIDIProtocolID protocol) const {
  if (!hasProtocols()) {
    return status::unknownError;
  }
  return isProtocol(protocol) ? noErr : status::parameterError;
}

OSStatus VirtualMidiService::checkEndpoint(Ref endpoint, MidiObjectKind kind) const {
  const auto* found = setup_.find(endpoint);
  if (found == nullptr || !found->isEndpoint()) {
    return status::unknownEndpoint;
  }
  return found->kind == kind ? noErr : status::wrongEndpointType;
}

/// Lists that a program passes off as a source's can only come from its own, the virtual ones.
OSStatus VirtualMidiService::checkSource(Ref source, bool wantsVirtual) const {
  if (const OSStatus failure = checkEndpoint(source, MidiObjectKind::source); failure != noErr) {
    return failure;
  }
  return setup_.find(source)->isVirtual() == wantsVirtual ? noErr : status::notPermitted;
}

OSStatus VirtualMidiService::addPort(Ref client, std::optional<MidiReader> reader, Ref& out) {
  auto* queue = clients_.receiveQueue(client);
  if (queue == nullptr) {
    return status::invalidClient;
  }
  out = references_.next();
  routing_.addPort(out,
                   reader ? std::make_shared<MidiReceiver>(runtime_, *queue, std::move(*reader)) : nullptr);
  return noErr;
}

OSStatus VirtualMidiService::MIDIInputPortCreateWithProtocol(Ref client, const std::string&,
                                                             MIDIProtocolID protocol, Ref& outPort,
                                                             MIDIReceiveBlock block) {
  return perform(MidiOperation::inputPortCreateWithProtocol, client, [&] {
    const OSStatus failure = checkProtocol(protocol);
    return failure != noErr ? failure : addPort(client, WordReader{protocol, std::move(block)}, outPort);
  });
}

OSStatus VirtualMidiService::MIDIInputPortCreateWithBlock(Ref client, const std::string&, Ref& outPort,
                                                          MIDIReadBlock block) {
  return perform(MidiOperation::inputPortCreateWithBlock, client,
                 [&] { return addPort(client, std::move(block), outPort); });
}

OSStatus VirtualMidiService::MIDIOutputPortCreate(Ref client, const std::string&, Ref& outPort) {
  return perform(MidiOperation::outputPortCreate, client,
                 [&] { return addPort(client, std::nullopt, outPort); });
}

OSStatus VirtualMidiService::MIDIPortDispose(Ref port) {
  MidiRouting::Receiver receiver;
  const OSStatus result =
      perform(MidiOperation::portDispose, port, [&] { return routing_.removePort(port, receiver); });
  close(receiver);
  return result;
}

OSStatus VirtualMidiService::MIDIPortConnectSource(Ref port, Ref source, ConnectionToken token) {
  return perform(MidiOperation::portConnectSource, port, [&] {
    const OSStatus failure = checkEndpoint(source, MidiObjectKind::source);
    return failure != noErr ? failure : routing_.connect(port, source, token);
  });
}

OSStatus VirtualMidiService::MIDIPortDisconnectSource(Ref port, Ref source) {
  return perform(MidiOperation::portDisconnectSource, port,
                 [&] { return routing_.disconnect(port, source); });
}

OSStatus VirtualMidiService::addVirtualEndpoint(Ref client, const VirtualEndpoint& description,
                                                std::optional<MidiReader> reader, Ref& out) {
  auto* queue = clients_.receiveQueue(client);
  if (queue == nullptr) {
    return status::invalidClient;
  }
  out = setup_.addVirtualEndpoint(description.kind, description.name, description.protocol);
  if (reader) {
    routing_.setReader(out, std::make_shared<MidiReceiver>(runtime_, *queue, std::move(*reader)));
  }
  clients_.notify(addedMessages(setup_, out));
  return noErr;
}

OSStatus VirtualMidiService::MIDIDestinationCreateWithProtocol(Ref client, const std::string& name,
                                                               MIDIProtocolID protocol, Ref& outEndpoint,
                                                               MIDIReceiveBlock block) {
  return perform(MidiOperation::destinationCreateWithProtocol, client, [&] {
    const OSStatus failure = checkProtocol(protocol);
    return failure != noErr ? failure
                            : addVirtualEndpoint(client, {MidiObjectKind::destination, name, protocol},
                                                 WordReader{protocol, std::move(block)}, outEndpoint);
  });
}

OSStatus VirtualMidiService::MIDIDestinationCreateWithBlock(Ref client, const std::string& name,
                                                            Ref& outEndpoint, MIDIReadBlock block) {
  return perform(MidiOperation::destinationCreateWithBlock, client, [&] {
    return addVirtualEndpoint(client, {MidiObjectKind::destination, name, MIDIProtocolID::midi1_0},
                              std::move(block), outEndpoint);
  });
}

OSStatus VirtualMidiService::MIDISourceCreateWithProtocol(Ref client, const std::string& name,
                                                          MIDIProtocolID protocol, Ref& outEndpoint) {
  return perform(MidiOperation::sourceCreateWithProtocol, client, [&] {
    const OSStatus failure = checkProtocol(protocol);
    return failure != noErr ? failure
                            : addVirtualEndpoint(client, {MidiObjectKind::source, name, protocol},
                                                 std::nullopt, outEndpoint);
  });
}

OSStatus VirtualMidiService::MIDISourceCreate(Ref client, const std::string& name, Ref& outEndpoint) {
  return perform(MidiOperation::sourceCreate, client, [&] {
    return addVirtualEndpoint(client, {MidiObjectKind::source, name, MIDIProtocolID::midi1_0}, std::nullopt,
                              outEndpoint);
  });
}

OSStatus VirtualMidiService::MIDIEndpointDispose(Ref endpoint) {
  MidiRouting::Receiver receiver;
  const OSStatus result = perform(MidiOperation::endpointDispose, endpoint, [&] {
    const auto* found = setup_.find(endpoint);
    if (found == nullptr || !found->isEndpoint()) {
      return status::unknownEndpoint;
    }
    if (!found->isVirtual()) {
      return status::notPermitted;
    }
    const auto messages = removedMessages(setup_, endpoint);
    setup_.remove(endpoint);
    receiver = routing_.removeEndpoint(endpoint);
    clients_.notify(messages);
    return noErr;
  });
  close(receiver);
  return result;
}

OSStatus VirtualMidiService::send(Ref port, Ref destination, const SharedMidiList& list) {
  if (!routing_.isOutputPort(port)) {
    return status::invalidPort;
  }
  const OSStatus failure = checkEndpoint(destination, MidiObjectKind::destination);
  if (failure == noErr) {
    routing_.deliverTo(destination, port, list);
  }
  return failure;
}

OSStatus VirtualMidiService::receive(Ref source, const SharedMidiList& list, bool isVirtual) {
  const OSStatus failure = checkSource(source, isVirtual);
  if (failure == noErr) {
    routing_.deliverFrom(source, list);
    thru_.forward(source, list, [this](Ref connection, Ref destination, const SharedMidiList& left) {
      routing_.deliverTo(destination, connection, left);
    });
  }
  return failure;
}

OSStatus VirtualMidiService::MIDISend(Ref port, Ref destination, const MIDIPacketList& list) {
  return perform(MidiOperation::send, port, [&] { return send(port, destination, share(list)); });
}

OSStatus VirtualMidiService::MIDISendEventList(Ref port, Ref destination, const MIDIEventList& list) {
  return perform(MidiOperation::sendEventList, port, [&] {
    const OSStatus failure = checkProtocol(list.protocol);
    return failure != noErr ? failure : send(port, destination, share(list));
  });
}

OSStatus VirtualMidiService::MIDIReceived(Ref source, const MIDIPacketList& list) {
  return perform(MidiOperation::received, source, [&] { return receive(source, share(list), true); });
}

OSStatus VirtualMidiService::MIDIReceivedEventList(Ref source, const MIDIEventList& list) {
  return perform(MidiOperation::receivedEventList, source, [&] {
    const OSStatus failure = checkProtocol(list.protocol);
    return failure != noErr ? failure : receive(source, share(list), true);
  });
}

OSStatus VirtualMidiService::sendFromEquipment(Ref source, const MidiList& list) {
  const std::lock_guard lock(mutex_);
  return receive(source, share(list), false);
}

OSStatus VirtualMidiService::readAsEquipment(Ref destination, MidiReader reader) {
  MidiRouting::Receiver former;
  {
    const std::lock_guard lock(mutex_);
    const OSStatus failure = checkEndpoint(destination, MidiObjectKind::destination);
    if (failure != noErr || setup_.find(destination)->isVirtual()) {
      return failure != noErr ? failure : status::notPermitted;
    }
    former = routing_.setReader(destination,
                                std::make_shared<MidiReceiver>(runtime_, equipmentQueue_, std::move(reader)));
  }
  close(former);
  return noErr;
}

void VirtualMidiService::MIDIThruConnectionParamsInitialize(MIDIThruConnectionParams& out) const {
  calls_.begin(MidiOperation::thruConnectionParamsInitialize, 0);
  out = usualThruParameters();
}

OSStatus VirtualMidiService::MIDIThruConnectionCreate(const std::optional<std::string>& ownerID,
                                                      std::span<const std::uint8_t> parameters,
                                                      Ref& outConnection) {
  return perform(MidiOperation::thruConnectionCreate, 0, [&] {
    const OSStatus result = thru_.create(ownerID, parameters, outConnection);
    if (result == noErr) {
      clients_.notify({thruConnectionChangedMessage()});
    }
    return result;
  });
}

OSStatus VirtualMidiService::MIDIThruConnectionDispose(Ref connection) {
  return perform(MidiOperation::thruConnectionDispose, connection, [&] {
    const OSStatus result = thru_.dispose(connection);
    if (result == noErr) {
      clients_.notify({thruConnectionChangedMessage()});
    }
    return result;
  });
}

OSStatus VirtualMidiService::MIDIThruConnectionFind(const std::string& ownerID,
                                                    std::vector<std::uint8_t>& outReferences) const {
  return perform(MidiOperation::thruConnectionFind, 0, [&] {
    const auto owned = thru_.ownedBy(ownerID);
    outReferences.resize(owned.size() * sizeof(Ref));
    if (!owned.empty()) {
      std::memcpy(outReferences.data(), owned.data(), outReferences.size());
    }
    return noErr;
  });
}

}  // namespace karvex::rig

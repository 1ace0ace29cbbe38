#include <cstring>
#include <utility>

#include "MIDIKitIO/platform/engine/MIDINotifications.hpp"
#include "MIDIKitIO/platform/engine/MIDIServiceEngine.hpp"
#include "MIDIKitIO/platform/engine/ThruParameters.hpp"

// The portion of MIDIServiceEngine that has to do with lists: ports, virtual endpoints, delivery and thru
// connections.

namespace midikit::io::engine {

namespace {

bool isProtocol(MIDIProtocolID protocol) {
  return protocol == MIDIProtocolID::midi1_0 || protocol == MIDIProtocolID::midi2_0;
}

void close(const std::shared_ptr<ListReceiver>& receiver) {
  if (receiver != nullptr) {
    receiver->close();
  }
}

}  // namespace

/// Whether the operations with protocols may be used, and with this one.
OSStatus MIDIServiceEngine::checkProtocol(MIDIProtocolID protocol) const {
  if (!hasProtocols()) {
    return statusOf(MIDIOSStatus::unknownError);
  }
  return isProtocol(protocol) ? noErr : statusOf(MIDIOSStatus::internalError);
}

OSStatus MIDIServiceEngine::checkEndpoint(Ref endpoint, MIDIObjectKind kind) const {
  const auto* found = setup_.find(endpoint);
  if (found == nullptr || !found->isEndpoint()) {
    return statusOf(MIDIOSStatus::unknownEndpoint);
  }
  return found->kind == kind ? noErr : statusOf(MIDIOSStatus::wrongEndpointType);
}

/// Lists that a program passes off as a source's can only come from its own, the virtual ones.
OSStatus MIDIServiceEngine::checkSource(Ref source, bool wantsOwn) const {
  if (const OSStatus failure = checkEndpoint(source, MIDIObjectKind::source); failure != noErr) {
    return failure;
  }
  return setup_.find(source)->isOwn == wantsOwn ? noErr : statusOf(MIDIOSStatus::notPermitted);
}

/// Closed from the beginning if a block makes it that close() waits for.
MIDIRouting::Receiver MIDIServiceEngine::makeReceiver(karvex::foundation::SerialQueue& queue,
                                                      MIDIReader reader, ListReceiver::Manner manner) {
  auto receiver = std::make_shared<ListReceiver>(runtime_, queue, std::move(reader), manner);
  if (isClosed_) {
    receiver->close();
  }
  return receiver;
}

OSStatus MIDIServiceEngine::addPort(Ref client, std::optional<MIDIReader> reader, Ref& out) {
  auto* queue = clients_.receiveQueue(client);
  if (queue == nullptr) {
    return statusOf(MIDIOSStatus::invalidClient);
  }
  out = references_.next();
  routing_.addPort(out, reader ? makeReceiver(*queue, std::move(*reader)) : nullptr);
  return noErr;
}

OSStatus MIDIServiceEngine::MIDIInputPortCreateWithProtocol(Ref client, const std::string&,
                                                            MIDIProtocolID protocol, Ref& outPort,
                                                            MIDIReceiveBlock block) {
  return locked([&] {
    const OSStatus failure = checkProtocol(protocol);
    return failure != noErr ? failure : addPort(client, WordReader{protocol, std::move(block)}, outPort);
  });
}

OSStatus MIDIServiceEngine::MIDIInputPortCreateWithBlock(Ref client, const std::string&, Ref& outPort,
                                                         MIDIReadBlock block) {
  return locked([&] { return addPort(client, std::move(block), outPort); });
}

OSStatus MIDIServiceEngine::MIDIOutputPortCreate(Ref client, const std::string&, Ref& outPort) {
  return locked([&] { return addPort(client, std::nullopt, outPort); });
}

OSStatus MIDIServiceEngine::MIDIPortDispose(Ref port) {
  MIDIRouting::Receiver receiver;
  const OSStatus result = locked([&] { return routing_.removePort(port, receiver); });
  engine::close(receiver);
  return tellRoutes(result);
}

OSStatus MIDIServiceEngine::MIDIPortConnectSource(Ref port, Ref source, ConnectionToken token) {
  return tellRoutes(delivering([&](Handovers& handovers) {
    const OSStatus failure = checkEndpoint(source, MIDIObjectKind::source);
    return failure != noErr ? failure : routing_.connect(port, source, token, handovers);
  }));
}

OSStatus MIDIServiceEngine::MIDIPortDisconnectSource(Ref port, Ref source) {
  return locked([&] {
    const auto endsAt = runtime_.clock().now() + lingerTime;
    const OSStatus result = routing_.disconnect(port, source, endsAt);
    if (result == noErr && !isEndDue_) {
      endConnectionsAt(endsAt);
    }
    return result;
  });
}

void MIDIServiceEngine::endConnectionsAt(karvex::foundation::TimePoint due) {
  isEndDue_ = true;
  auto& clock = runtime_.clock();
  timer_ = karvex::foundation::Timer::oneShot(
      clock, timerQueue_, due - clock.now(),
      [this, gate = timerGate_] { gate->pass([this] { endConnections(); }); });
}

void MIDIServiceEngine::endConnections() {
  {
    const std::lock_guard lock(mutex_);
    isEndDue_ = false;
    if (const auto next = routing_.endConnections(runtime_.clock().now())) {
      endConnectionsAt(*next);
    }
  }
  driver_->wantedSourcesChanged();
}

OSStatus MIDIServiceEngine::addVirtualEndpoint(Ref client, const VirtualEndpoint& description,
                                               std::optional<MIDIReader> reader, Ref& out) {
  auto* queue = clients_.receiveQueue(client);
  if (queue == nullptr) {
    return statusOf(MIDIOSStatus::invalidClient);
  }
  out = setup_.addVirtualEndpoint(description.kind, description.name, description.protocol);
  if (reader) {
    routing_.setReader(out, makeReceiver(*queue, std::move(*reader)));
  }
  auto messages = addedMessages(setup_, out);
  messages.push_back(setupChangedMessage());
  clients_.notify(messages);
  return noErr;
}

OSStatus MIDIServiceEngine::MIDIDestinationCreateWithProtocol(Ref client, const std::string& name,
                                                              MIDIProtocolID protocol, Ref& outEndpoint,
                                                              MIDIReceiveBlock block) {
  const OSStatus result = locked([&] {
    const OSStatus failure = checkProtocol(protocol);
    return failure != noErr ? failure
                            : addVirtualEndpoint(client, {MIDIObjectKind::destination, name, protocol},
                                                 WordReader{protocol, std::move(block)}, outEndpoint);
  });
  return tellAdded(result, outEndpoint, MIDIObjectKind::destination);
}

OSStatus MIDIServiceEngine::MIDIDestinationCreateWithBlock(Ref client, const std::string& name,
                                                           Ref& outEndpoint, MIDIReadBlock block) {
  const OSStatus result = locked([&] {
    return addVirtualEndpoint(client, {MIDIObjectKind::destination, name, MIDIProtocolID::midi1_0},
                              std::move(block), outEndpoint);
  });
  return tellAdded(result, outEndpoint, MIDIObjectKind::destination);
}

OSStatus MIDIServiceEngine::MIDISourceCreateWithProtocol(Ref client, const std::string& name,
                                                         MIDIProtocolID protocol, Ref& outEndpoint) {
  const OSStatus result = locked([&] {
    const OSStatus failure = checkProtocol(protocol);
    return failure != noErr ? failure
                            : addVirtualEndpoint(client, {MIDIObjectKind::source, name, protocol},
                                                 std::nullopt, outEndpoint);
  });
  return tellAdded(result, outEndpoint, MIDIObjectKind::source);
}

OSStatus MIDIServiceEngine::MIDISourceCreate(Ref client, const std::string& name, Ref& outEndpoint) {
  const OSStatus result = locked([&] {
    return addVirtualEndpoint(client, {MIDIObjectKind::source, name, MIDIProtocolID::midi1_0}, std::nullopt,
                              outEndpoint);
  });
  return tellAdded(result, outEndpoint, MIDIObjectKind::source);
}

OSStatus MIDIServiceEngine::MIDIEndpointDispose(Ref endpoint) {
  MIDIRouting::Receiver receiver;
  const OSStatus result = locked([&] {
    const auto* found = setup_.find(endpoint);
    if (found == nullptr || !found->isEndpoint()) {
      return statusOf(MIDIOSStatus::unknownEndpoint);
    }
    if (!found->isOwn) {
      return statusOf(MIDIOSStatus::notPermitted);
    }
    auto messages = removedMessages(setup_, endpoint);
    messages.push_back(setupChangedMessage());
    setup_.remove(endpoint);
    receiver = routing_.removeEndpoint(endpoint);
    clients_.notify(messages);
    return noErr;
  });
  engine::close(receiver);
  if (result == noErr) {
    driver_->ownEndpointRemoved(endpoint);
    driver_->wantedSourcesChanged();
  }
  return result;
}

OSStatus MIDIServiceEngine::readerFor(Ref port, Ref destination, MIDIRouting::Receiver& out) const {
  if (!routing_.isOutputPort(port)) {
    return statusOf(MIDIOSStatus::invalidPort);
  }
  const OSStatus failure = checkEndpoint(destination, MIDIObjectKind::destination);
  if (failure == noErr) {
    out = routing_.readerOf(destination);
  }
  return failure;
}

/// Without a copy of the list where its reader can take it now.
template <typename List>
void MIDIServiceEngine::deliver(const MIDIRouting::Receiver& reader, Ref port, const List& list) {
  if (reader != nullptr && !reader->readAtOnce(&list, port)) {
    reader->add(lists_.share(list), port);
    reader->handOverNext(ListReceiver::Thread::queues);
  }
}

OSStatus MIDIServiceEngine::receive(Ref source, const SharedMIDIList& list, bool isOwn,
                                    Handovers& handovers) {
  const OSStatus failure = checkSource(source, isOwn);
  if (failure == noErr) {
    routing_.deliverFrom(source, list, handovers);
    routing_.deliverTo(source, source, list, handovers);
    thru_.forward(source, list, [&](Ref connection, Ref destination, const SharedMIDIList& left) {
      routing_.deliverTo(destination, connection, left, handovers);
    });
  }
  return failure;
}

OSStatus MIDIServiceEngine::MIDISend(Ref port, Ref destination, const MIDIPacketList& list) {
  MIDIRouting::Receiver reader;
  const OSStatus failure = locked([&] { return readerFor(port, destination, reader); });
  deliver(reader, port, list);
  return failure;
}

OSStatus MIDIServiceEngine::MIDISendEventList(Ref port, Ref destination, const MIDIEventList& list) {
  MIDIRouting::Receiver reader;
  const OSStatus failure = locked([&] {
    const OSStatus wrongProtocol = checkProtocol(list.protocol);
    return wrongProtocol != noErr ? wrongProtocol : readerFor(port, destination, reader);
  });
  deliver(reader, port, list);
  return failure;
}

OSStatus MIDIServiceEngine::MIDIReceived(Ref source, const MIDIPacketList& list) {
  return delivering(
      [&](Handovers& handovers) { return receive(source, lists_.share(list), true, handovers); });
}

OSStatus MIDIServiceEngine::MIDIReceivedEventList(Ref source, const MIDIEventList& list) {
  return delivering([&](Handovers& handovers) {
    const OSStatus failure = checkProtocol(list.protocol);
    return failure != noErr ? failure : receive(source, lists_.share(list), true, handovers);
  });
}

OSStatus MIDIServiceEngine::sendFromEquipment(Ref source, const MIDIList& list, Handovers& handovers) {
  return locked([&] { return receive(source, lists_.share(list), false, handovers); });
}

OSStatus MIDIServiceEngine::sendFromOutside(Ref destination, Ref sender, const MIDIList& list,
                                            Handovers& handovers) {
  return locked([&] {
    const OSStatus failure = checkEndpoint(destination, MIDIObjectKind::destination);
    if (failure != noErr || !setup_.find(destination)->isOwn) {
      return failure != noErr ? failure : statusOf(MIDIOSStatus::notPermitted);
    }
    routing_.deliverTo(destination, sender, lists_.share(list), handovers);
    return noErr;
  });
}

OSStatus MIDIServiceEngine::readAsEquipment(Ref destination, karvex::foundation::SerialQueue& queue,
                                            MIDIReader reader) {
  MIDIRouting::Receiver former;
  {
    const std::lock_guard lock(mutex_);
    const OSStatus failure = checkEndpoint(destination, MIDIObjectKind::destination);
    if (failure != noErr || setup_.find(destination)->isOwn) {
      return failure != noErr ? failure : statusOf(MIDIOSStatus::notPermitted);
    }
    former = routing_.setReader(destination, makeReceiver(queue, std::move(reader)));
  }
  engine::close(former);
  return noErr;
}

OSStatus MIDIServiceEngine::listenAsEquipment(Ref source, karvex::foundation::SerialQueue& queue,
                                              MIDIReader reader, ListReceiver::Manner manner) {
  MIDIRouting::Receiver former;
  {
    const std::lock_guard lock(mutex_);
    if (const OSStatus failure = checkSource(source, true); failure != noErr) {
      return failure;
    }
    former = routing_.setListener(source, makeReceiver(queue, std::move(reader), manner));
  }
  engine::close(former);
  return noErr;
}

std::set<MIDIObjectRef> MIDIServiceEngine::wantedSources() const {
  const std::lock_guard lock(mutex_);
  auto heard = routing_.connectedSources();
  heard.merge(thru_.sources());
  return heard;
}

std::set<std::pair<MIDIObjectRef, MIDIObjectRef>> MIDIServiceEngine::plainThruConnections() const {
  return locked([this] { return thru_.plainConnections(); });
}

/// Another program has changed them, or has left them to this one.
void MIDIServiceEngine::thruConnectionsChanged() {
  notify(thruConnectionChangedMessage());
  driver_->wantedSourcesChanged();
}

OSStatus MIDIServiceEngine::tellAdded(OSStatus result, Ref endpoint, MIDIObjectKind kind) {
  if (result == noErr) {
    driver_->ownEndpointAdded(endpoint, kind);
    driver_->wantedSourcesChanged();  // A persistent thru connection may have waited for it.
  }
  return result;
}

OSStatus MIDIServiceEngine::tellRoutes(OSStatus result) {
  if (result == noErr) {
    driver_->wantedSourcesChanged();
  }
  return result;
}

void MIDIServiceEngine::MIDIThruConnectionParamsInitialize(MIDIThruConnectionParams& out) const {
  out = usualThruParameters();
}

OSStatus MIDIServiceEngine::MIDIThruConnectionCreate(const std::optional<std::string>& ownerID,
                                                     std::span<const std::uint8_t> parameters,
                                                     Ref& outConnection) {
  return tellRoutes(locked([&] {
    const OSStatus result = thru_.create(ownerID, parameters, outConnection);
    if (result == noErr) {
      clients_.notify({thruConnectionChangedMessage()});
    }
    return result;
  }));
}

OSStatus MIDIServiceEngine::MIDIThruConnectionDispose(Ref connection) {
  return tellRoutes(locked([&] {
    const OSStatus result = thru_.dispose(connection);
    if (result == noErr) {
      clients_.notify({thruConnectionChangedMessage()});
    }
    return result;
  }));
}

OSStatus MIDIServiceEngine::MIDIThruConnectionFind(const std::string& ownerID,
                                                   std::vector<std::uint8_t>& outReferences) const {
  return locked([&] {
    const auto owned = thru_.ownedBy(ownerID);
    outReferences.resize(owned.size() * sizeof(Ref));
    if (!owned.empty()) {
      std::memcpy(outReferences.data(), owned.data(), outReferences.size());
    }
    return noErr;
  });
}

}  // namespace midikit::io::engine

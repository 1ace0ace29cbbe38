#include "MIDIKitIO/ports/MIDIInputConnection.hpp"

#include <utility>

#include "MIDIKitCore/MIDIIOError.hpp"
#include "MIDIKitIO/manager/DroppedErrors.hpp"
#include "MIDIKitIO/manager/MIDIManager.hpp"
#include "MIDIKitIO/objects/SystemObjects.hpp"
#include "MIDIKitIO/packets/PlatformProtocol.hpp"
#include "MIDIKitIO/ports/ReceiveBlocks.hpp"
#include "MIDIKitIO/receive/ReceiveHandler.hpp"
#include "foundation/text/Uuid.hpp"

namespace midikit::io {

using core::MIDIIOError;

namespace {

MIDIIOError notListening() {
  return MIDIIOError::connectionError("Not in a listening state; can't connect to endpoints.");
}

}  // namespace

MIDIInputConnection::MIDIInputConnection(const std::shared_ptr<MIDIManager>& manager, CoreMIDIAPIVersion api,
                                         const MIDIInputConnectionSettings& settings)
    : MIDIManagedConnection(manager, {.kind = MIDIEndpointType::output,
                                      .matching = settings.mode.matching(),
                                      .filter = settings.filter,
                                      .api = api}),
      mode_(settings.mode),
      receiveHandler_(makeReceiveHandler(settings.receiver, manager->receiveContext())) {}

std::vector<MIDIOutputEndpoint> MIDIInputConnection::endpoints() const {
  std::vector<MIDIOutputEndpoint> endpoints;
  for (const auto source : coreMIDIOutputEndpointRefs()) {
    endpoints.push_back(makeOutputEndpoint(service(), source));
  }
  return endpoints;
}

std::set<MIDIObjectRef> MIDIInputConnection::coreMIDIOutputEndpointRefs() const {
  const auto locked = lock();
  return sources_;
}

std::optional<MIDIObjectRef> MIDIInputConnection::coreMIDIInputPortRef() const {
  const auto locked = lock();
  return port_;
}

void MIDIInputConnection::listen() {
  const auto manager = midiManager();
  const auto locked = lock();
  if (manager) {
    makePort(*manager);
  }
}

void MIDIInputConnection::connect() {
  const auto manager = midiManager();
  if (!manager) {
    throw notListening();
  }
  refreshNow(*manager);
}

void MIDIInputConnection::disconnect(const std::optional<std::set<MIDIObjectRef>>& sources) {
  const auto locked = lock();
  disconnectFrom(sources ? *sources : sources_);
}

void MIDIInputConnection::dispose() noexcept {
  std::optional<MIDIObjectRef> port;
  Numbers numbers;  // They stay until the port has gone.
  {
    const auto locked = lock();
    isDisposed_ = true;
    internal::droppingErrors([this] { disconnectFrom(sources_); });
    sources_.clear();
    port = std::exchange(port_, std::nullopt);
    numbers.swap(numbers_);
  }
  if (port) {
    service().MIDIPortDispose(*port);
  }
  receiveHandler_.setValue(nullptr);
}

std::string MIDIInputConnection::description() const {
  return "MIDIInputConnection(criteria: " + io::description(outputsCriteria()) +
         ", outputEndpointRefs: " + internal::description(coreMIDIOutputEndpointRefs()) +
         ", inputPortRef: " + internal::description(coreMIDIInputPortRef()) + ")";
}

void MIDIInputConnection::refresh(MIDIManager& manager, const MIDIEndpointIdentities& criteria) {
  makePort(manager);
  if (!port_) {
    throw notListening();
  }
  disconnectFrom(sources_);
  sources_ = located(manager, criteria);
  for (const auto source : sources_) {
    const auto& number = numbers_.try_emplace(source, source).first->second;
    service().MIDIPortConnectSource(*port_, source, number.token());
  }
}

void MIDIInputConnection::letGo(const References& sources) {
  internal::droppingErrors([&] { disconnectFrom(sources); });
}

void MIDIInputConnection::makePort(MIDIManager& manager) {
  if (port_ || isDisposed_) {
    return;
  }
  const auto name = karvex::foundation::Uuid::random().text();
  const internal::ReceiveBlocks blocks{service(), manager.eventQueue(), receiveHandler()};
  const auto protocol = internal::platformProtocol(api(), service().platformVersion());
  const auto client = manager.coreMIDIClientRef();
  MIDIObjectRef port = 0;
  core::checkStatus(
      protocol ? service().MIDIInputPortCreateWithProtocol(client, name, *protocol, port, blocks.forEvents())
               : service().MIDIInputPortCreateWithBlock(client, name, port, blocks.forPackets()));
  port_ = port;
}

void MIDIInputConnection::disconnectFrom(const References& sources) {
  if (!port_) {
    throw MIDIIOError::connectionError(
        "Attempted to disconnect outputs but was not in a listening state; nothing to disconnect.");
  }
  for (const auto source : sources) {
    service().MIDIPortDisconnectSource(*port_, source);
  }
}

}  // namespace midikit::io

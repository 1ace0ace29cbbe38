#include "MIDIKitIO/ports/MIDIOutputConnection.hpp"

#include <utility>

#include "MIDIKitCore/MIDIIOError.hpp"
#include "MIDIKitIO/manager/MIDIManager.hpp"
#include "MIDIKitIO/objects/SystemObjects.hpp"
#include "foundation/text/Uuid.hpp"

namespace midikit::io {

MIDIOutputConnection::MIDIOutputConnection(const std::shared_ptr<MIDIManager>& manager,
                                           CoreMIDIAPIVersion api,
                                           const MIDIOutputConnectionSettings& settings)
    : MIDIManagedConnection(manager, {.kind = MIDIEndpointType::input,
                                      .matching = settings.mode.matching(),
                                      .filter = settings.filter,
                                      .api = api}),
      MessageSender(service(), this->api()),
      mode_(settings.mode) {}

std::vector<MIDIInputEndpoint> MIDIOutputConnection::endpoints() const {
  std::vector<MIDIInputEndpoint> endpoints;
  for (const auto destination : coreMIDIInputEndpointRefs()) {
    endpoints.push_back(makeInputEndpoint(service(), destination));
  }
  return endpoints;
}

void MIDIOutputConnection::create() {
  const auto manager = midiManager();
  const auto locked = lock();
  if (!manager || isDisposed_ || coreMIDIOutputPortRef()) {
    return;
  }
  MIDIObjectRef port = 0;
  core::checkStatus(service().MIDIOutputPortCreate(manager->coreMIDIClientRef(),
                                                   karvex::foundation::Uuid::random().text(), port));
  sending_.modify([port](Sending& sending) { sending.port = port; });
}

void MIDIOutputConnection::resolve() {
  if (const auto manager = midiManager()) {
    refreshNow(*manager);
  }
}

void MIDIOutputConnection::sendPacketList(const MIDIPacketList& list) {
  forEachDestination([&](MIDIObjectRef port, MIDIObjectRef destination) {
    static_cast<void>(service().MIDISend(port, destination, list));
  });
}

void MIDIOutputConnection::sendEventList(const MIDIEventList& list) {
  forEachDestination([&](MIDIObjectRef port, MIDIObjectRef destination) {
    static_cast<void>(service().MIDISendEventList(port, destination, list));
  });
}

template <class Send>
void MIDIOutputConnection::forEachDestination(const Send& send) const {
  const auto sending = sending_.value();
  if (!sending.port) {
    throw core::MIDIIOError::internalInconsistency("Output port reference is nil.");
  }
  for (const auto destination : *sending.destinations) {
    send(*sending.port, destination);
  }
}

void MIDIOutputConnection::dispose() noexcept {
  std::optional<MIDIObjectRef> port;
  {
    const auto locked = lock();
    isDisposed_ = true;
    port = sending_.value().port;
    sending_.setValue({});
  }
  if (port) {
    service().MIDIPortDispose(*port);
  }
}

std::string MIDIOutputConnection::description() const {
  return "MIDIOutputConnection(criteria: " + io::description(inputsCriteria()) +
         ", inputEndpointRefs: " + internal::description(coreMIDIInputEndpointRefs()) +
         ", outputPortRef: " + internal::description(coreMIDIOutputPortRef()) + ")";
}

void MIDIOutputConnection::refresh(MIDIManager& manager, const MIDIEndpointIdentities& criteria) {
  if (!isDisposed_) {
    auto destinations = std::make_shared<const References>(located(manager, criteria));
    sending_.modify([&](Sending& sending) { sending.destinations.swap(destinations); });
  }
}

}  // namespace midikit::io

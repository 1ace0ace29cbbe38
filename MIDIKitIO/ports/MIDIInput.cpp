#include "MIDIKitIO/ports/MIDIInput.hpp"

#include "MIDIKitIO/manager/MIDIManager.hpp"
#include "MIDIKitIO/objects/SystemObjects.hpp"
#include "MIDIKitIO/packets/PlatformProtocol.hpp"
#include "MIDIKitIO/ports/ReceiveBlocks.hpp"
#include "MIDIKitIO/receive/ReceiveHandler.hpp"

namespace midikit::io {

MIDIInput::MIDIInput(const std::shared_ptr<MIDIManager>& manager, const MIDIInputSettings& settings,
                     std::optional<std::int32_t> uniqueID)
    : MIDIManagedEndpoint(manager, {.name = settings.name, .uniqueID = uniqueID}),
      receiveHandler_(makeReceiveHandler(settings.receiver, manager->receiveContext())) {}

MIDIInputEndpoint MIDIInput::endpoint() const {
  return makeInputEndpoint(service(), reference().value_or(0));
}

void MIDIInput::dispose() noexcept {
  MIDIManagedEndpoint::dispose();
  receiveHandler_.setValue(nullptr);
}

bool MIDIInput::isTaken(std::int32_t uniqueID) const {
  return findDestination(service(), uniqueID).has_value();
}

OSStatus MIDIInput::makeEndpoint(const MIDIManager& manager, MIDIObjectRef& outEndpoint) {
  const internal::ReceiveBlocks blocks{service(), manager.eventQueue(), receiveHandler()};
  const auto protocol = internal::platformProtocol(api(), service().platformVersion());
  return protocol ? service().MIDIDestinationCreateWithProtocol(manager.coreMIDIClientRef(), name(),
                                                                *protocol, outEndpoint, blocks.forEvents())
                  : service().MIDIDestinationCreateWithBlock(manager.coreMIDIClientRef(), name(), outEndpoint,
                                                             blocks.forPackets());
}

}  // namespace midikit::io

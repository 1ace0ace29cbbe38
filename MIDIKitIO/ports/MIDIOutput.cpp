#include "MIDIKitIO/ports/MIDIOutput.hpp"

#include "MIDIKitCore/MIDIIOError.hpp"
#include "MIDIKitIO/manager/MIDIManager.hpp"
#include "MIDIKitIO/objects/SystemObjects.hpp"
#include "MIDIKitIO/packets/PlatformProtocol.hpp"

namespace midikit::io {

MIDIOutput::MIDIOutput(const std::shared_ptr<MIDIManager>& manager, const MIDIOutputSettings& settings,
                       std::optional<std::int32_t> uniqueID)
    : MIDIManagedEndpoint(manager, {.name = settings.name, .uniqueID = uniqueID}),
      MessageSender(service(), api()) {}

MIDIOutputEndpoint MIDIOutput::endpoint() const {
  return makeOutputEndpoint(service(), reference().value_or(0));
}

void MIDIOutput::sendPacketList(const MIDIPacketList& list) {
  core::checkStatus(service().MIDIReceived(source(), list));
}

void MIDIOutput::sendEventList(const MIDIEventList& list) {
  core::checkStatus(service().MIDIReceivedEventList(source(), list));
}

bool MIDIOutput::isTaken(std::int32_t uniqueID) const {
  return findSource(service(), uniqueID).has_value();
}

OSStatus MIDIOutput::makeEndpoint(const MIDIManager& manager, MIDIObjectRef& outEndpoint) {
  const auto protocol = internal::platformProtocol(api(), service().platformVersion());
  return protocol ? service().MIDISourceCreateWithProtocol(manager.coreMIDIClientRef(), name(), *protocol,
                                                           outEndpoint)
                  : service().MIDISourceCreate(manager.coreMIDIClientRef(), name(), outEndpoint);
}

MIDIObjectRef MIDIOutput::source() const {
  const auto source = reference();
  if (!source) {
    throw core::MIDIIOError::internalInconsistency("Port reference is nil.");
  }
  return *source;
}

}  // namespace midikit::io

#pragma once

#include <memory>
#include <optional>
#include <string>

#include "MIDIKitIO/objects/MIDIEndpoint.hpp"
#include "MIDIKitIO/packets/MessageSender.hpp"
#include "MIDIKitIO/ports/MIDIIdentifierPersistence.hpp"
#include "MIDIKitIO/ports/MIDIManagedEndpoint.hpp"

namespace midikit::io {

/// What MIDIManager::addOutput() makes.
struct MIDIOutputSettings {
  std::string name;
  std::string tag;
  MIDIIdentifierPersistence persistence = MIDIIdentifierPersistence::adHoc();
};

/// A virtual output: the program is a source that others can listen to. What it sends goes to all of them.
class MIDIOutput final : public internal::MIDIManagedEndpoint, public internal::MessageSender {
 public:
  /// Nothing is on the platform yet. For the manager.
  MIDIOutput(const std::shared_ptr<MIDIManager>& manager, const MIDIOutputSettings& settings,
             std::optional<std::int32_t> uniqueID);
  ~MIDIOutput() override { dispose(); }

  /// The record, read at the moment of the call; with the reference 0 if the endpoint isn't on the platform.
  ///
  /// Thread-safe: yes.
  /// Realtime-safe: no, it asks the service.
  MIDIOutputEndpoint endpoint() const;

  /// None if the endpoint isn't on the platform. The platform's virtual source.
  std::optional<MIDIObjectRef> coreMIDIOutputPortRef() const { return reference(); }

  void sendPacketList(const MIDIPacketList& list) override;
  void sendEventList(const MIDIEventList& list) override;

  /// `MIDIOutput(name: "a name", uniqueID: 1)`, with "nil" for a unique ID that isn't there.
  std::string description() const override { return descriptionAs("MIDIOutput"); }

 private:
  bool isTaken(std::int32_t uniqueID) const override;
  OSStatus makeEndpoint(const MIDIManager& manager, MIDIObjectRef& outEndpoint) override;
  /// @throws MIDIIOError if the endpoint isn't on the platform
  MIDIObjectRef source() const;
};

}  // namespace midikit::io

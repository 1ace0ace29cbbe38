#pragma once

#include <memory>
#include <optional>
#include <string>

#include "MIDIKitIO/objects/MIDIEndpoint.hpp"
#include "MIDIKitIO/ports/MIDIIdentifierPersistence.hpp"
#include "MIDIKitIO/ports/MIDIManagedEndpoint.hpp"
#include "MIDIKitIO/receive/MIDIReceiver.hpp"

namespace midikit::io {

/// What MIDIManager::addInput() makes.
struct MIDIInputSettings {
  std::string name;
  std::string tag;
  MIDIIdentifierPersistence persistence = MIDIIdentifierPersistence::adHoc();
  MIDIReceiver receiver;
};

/// A virtual input: the program is a destination that others can send to. What comes has no source.
class MIDIInput final : public internal::MIDIManagedEndpoint {
 public:
  /// Nothing is on the platform yet. For the manager.
  MIDIInput(const std::shared_ptr<MIDIManager>& manager, const MIDIInputSettings& settings,
            std::optional<std::int32_t> uniqueID);
  ~MIDIInput() override { dispose(); }

  /// The record, read at the moment of the call; with the reference 0 if the endpoint isn't on the platform.
  ///
  /// Thread-safe: yes.
  /// Realtime-safe: no, it asks the service.
  MIDIInputEndpoint endpoint() const;

  /// None if the endpoint isn't on the platform. The platform's virtual destination.
  std::optional<MIDIObjectRef> coreMIDIInputPortRef() const { return reference(); }

  /// None once the input has been disposed.
  std::shared_ptr<MIDIReceiverProtocol> receiveHandler() const { return receiveHandler_.value(); }

  void dispose() noexcept override;

  /// `MIDIInput(name: "a name", uniqueID: 1)`, with "nil" for a unique ID that isn't there.
  std::string description() const override { return descriptionAs("MIDIInput"); }

 private:
  bool isTaken(std::int32_t uniqueID) const override;
  OSStatus makeEndpoint(const MIDIManager& manager, MIDIObjectRef& outEndpoint) override;

  internals::ThreadSafeAccess<std::shared_ptr<MIDIReceiverProtocol>> receiveHandler_;
};
static_assert(MIDIManagedReceivesMessages<MIDIInput>);

}  // namespace midikit::io

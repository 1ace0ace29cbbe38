#pragma once

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "MIDIKitIO/packets/MessageSender.hpp"
#include "MIDIKitIO/ports/MIDIConnectionMode.hpp"
#include "MIDIKitIO/ports/MIDIManagedConnection.hpp"
#include "MIDIKitInternals/ThreadSafeAccess.hpp"

namespace midikit::io {

/// What MIDIManager::addOutputConnection() makes.
struct MIDIOutputConnectionSettings {
  MIDIOutputConnectionMode mode;
  std::string tag;
  MIDIEndpointFilter filter;
};

/// A port that sends to inputs, which are chosen by criteria. A send goes to all that are there at that
/// moment; one that fails doesn't stop the others, and is not reported.
class MIDIOutputConnection final : public internal::MIDIManagedConnection, public internal::MessageSender {
 public:
  /// Nothing is on the platform yet. For the manager.
  MIDIOutputConnection(const std::shared_ptr<MIDIManager>& manager, CoreMIDIAPIVersion api,
                       const MIDIOutputConnectionSettings& settings);
  ~MIDIOutputConnection() override { dispose(); }

  const MIDIOutputConnectionMode& mode() const { return mode_; }
  MIDIEndpointIdentities inputsCriteria() const { return criteria(); }

  /// @name Changes of the criteria
  /// The next send goes by them. A criterion that matches nothing stays and waits.
  ///
  /// Thread-safe: yes.
  /// Realtime-safe: no, they lock and allocate.
  /// @{
  void addInputs(const MIDIEndpointIdentities& identities) { addCriteria(identities); }
  void addInputs(const std::vector<MIDIInputEndpoint>& endpoints) { addCriteria(identitiesOf(endpoints)); }
  void removeInputs(const MIDIEndpointIdentities& identities) { removeCriteria(identities); }
  void removeInputs(const std::vector<MIDIInputEndpoint>& endpoints) {
    removeCriteria(identitiesOf(endpoints));
  }
  void removeAllInputs() { removeAllCriteria(); }
  /// @}

  /// The records of what a send goes to, read at the moment of the call.
  ///
  /// Thread-safe: yes.
  /// Realtime-safe: no, it asks the service.
  std::vector<MIDIInputEndpoint> endpoints() const;
  /// What a send goes to.
  std::set<MIDIObjectRef> coreMIDIInputEndpointRefs() const { return *sending_.value().destinations; }
  /// None if there is no port.
  std::optional<MIDIObjectRef> coreMIDIOutputPortRef() const { return sending_.value().port; }

  /// Makes the port, unless it is there. For the manager.
  /// @throws MIDIIOError `osStatus`
  ///
  /// Thread-safe: yes.
  /// Realtime-safe: no, it locks and asks the service.
  void create();

  /// Finds the inputs that the criteria mean at this moment.
  ///
  /// Thread-safe: yes.
  /// Realtime-safe: no, it locks and allocates.
  void resolve();

  void sendPacketList(const MIDIPacketList& list) override;
  void sendEventList(const MIDIEventList& list) override;

  void dispose() noexcept override;

  /// `MIDIOutputConnection(criteria: [UniqueID: 1], inputEndpointRefs: [2], outputPortRef: 3)`
  std::string description() const override;

 private:
  /// What a send needs. A copy of it costs no memory, so a send holds no lock while it asks the service.
  struct Sending {
    std::optional<MIDIObjectRef> port;
    std::shared_ptr<const References> destinations = std::make_shared<const References>();
  };

  void refresh(MIDIManager& manager, const MIDIEndpointIdentities& criteria) override;
  /// Does `send` for the port with each destination.
  template <class Send>
  void forEachDestination(const Send& send) const;

  const MIDIOutputConnectionMode mode_;
  bool isDisposed_ = false;  ///< under the connection's lock
  internals::ThreadSafeAccess<Sending> sending_;
};

}  // namespace midikit::io

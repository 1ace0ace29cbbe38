#pragma once

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "MIDIKitIO/packets/ConnectionNumber.hpp"
#include "MIDIKitIO/ports/MIDIConnectionMode.hpp"
#include "MIDIKitIO/ports/MIDIManagedConnection.hpp"
#include "MIDIKitIO/receive/MIDIReceiver.hpp"
#include "MIDIKitInternals/ThreadSafeAccess.hpp"

namespace midikit::io {

/// What MIDIManager::addInputConnection() makes.
struct MIDIInputConnectionSettings {
  MIDIInputConnectionMode mode;
  std::string tag;
  MIDIReceiver receiver;
  MIDIEndpointFilter filter;
};

/// A port that listens to outputs, which are chosen by criteria: what comes up later is connected then, what
/// goes and comes back is connected again.
class MIDIInputConnection final : public internal::MIDIManagedConnection {
 public:
  /// Nothing is on the platform yet. For the manager.
  MIDIInputConnection(const std::shared_ptr<MIDIManager>& manager, CoreMIDIAPIVersion api,
                      const MIDIInputConnectionSettings& settings);
  ~MIDIInputConnection() override { dispose(); }

  const MIDIInputConnectionMode& mode() const { return mode_; }
  MIDIEndpointIdentities outputsCriteria() const { return criteria(); }

  /// @name Changes of the criteria
  /// What is connected follows at once. A criterion that matches nothing stays and waits.
  ///
  /// Thread-safe: yes.
  /// Realtime-safe: no, they lock and ask the service.
  /// @{
  void addOutputs(const MIDIEndpointIdentities& identities) { addCriteria(identities); }
  void addOutputs(const std::vector<MIDIOutputEndpoint>& endpoints) { addCriteria(identitiesOf(endpoints)); }
  void removeOutputs(const MIDIEndpointIdentities& identities) { removeCriteria(identities); }
  void removeOutputs(const std::vector<MIDIOutputEndpoint>& endpoints) {
    removeCriteria(identitiesOf(endpoints));
  }
  void removeAllOutputs() { removeAllCriteria(); }
  /// @}

  /// The records of what is connected, read at the moment of the call.
  ///
  /// Thread-safe: yes.
  /// Realtime-safe: no, it asks the service.
  std::vector<MIDIOutputEndpoint> endpoints() const;
  /// What the last refresh found, which disconnect() leaves; 0 is never among it.
  std::set<MIDIObjectRef> coreMIDIOutputEndpointRefs() const;
  /// None if there is no port.
  std::optional<MIDIObjectRef> coreMIDIInputPortRef() const;
  /// None once the connection has been disposed.
  std::shared_ptr<MIDIReceiverProtocol> receiveHandler() const { return receiveHandler_.value(); }

  /// Makes the port, unless it is there.
  /// @throws MIDIIOError
  ///
  /// Thread-safe: yes.
  /// Realtime-safe: no, it locks and asks the service.
  void listen();

  /// Makes the port, unless it is there, and connects what the criteria mean at this moment in the place of
  /// what was connected. A source that can't be connected doesn't stop the others.
  /// @throws MIDIIOError of listen(); `connectionError` if there is no port after it, as after the end of the
  /// manager
  ///
  /// Thread-safe: yes.
  /// Realtime-safe: no, it locks and asks the service.
  void connect();

  /// Disconnects these sources, or all.
  /// @throws MIDIIOError `connectionError` if there is no port
  ///
  /// Thread-safe: yes.
  /// Realtime-safe: no, it locks and asks the service.
  void disconnect(const std::optional<std::set<MIDIObjectRef>>& sources = std::nullopt);

  void dispose() noexcept override;

  /// `MIDIInputConnection(criteria: [UniqueID: 1], outputEndpointRefs: [2], inputPortRef: 3)`
  std::string description() const override;

 private:
  using Numbers = std::map<MIDIObjectRef, ConnectionNumber>;

  void refresh(MIDIManager& manager, const MIDIEndpointIdentities& criteria) override;
  void letGo(const References& sources) override;
  void makePort(MIDIManager& manager);
  void disconnectFrom(const References& sources);

  const MIDIInputConnectionMode mode_;
  internals::ThreadSafeAccess<std::shared_ptr<MIDIReceiverProtocol>> receiveHandler_;

  // Under the connection's lock:
  bool isDisposed_ = false;
  std::optional<MIDIObjectRef> port_;
  References sources_;
  /// Of each source that was ever connected: a list may come with the token of a connection that has ended,
  /// until the port is gone.
  Numbers numbers_;
};
static_assert(MIDIManagedReceivesMessages<MIDIInputConnection>);

}  // namespace midikit::io

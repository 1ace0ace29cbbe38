#pragma once

#include <concepts>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>

#include "MIDIKitIO/identity/MIDIEndpointFilter.hpp"
#include "MIDIKitIO/identity/MIDIEndpointIdentity.hpp"
#include "MIDIKitIO/manager/MIDIIORawNotification.hpp"
#include "MIDIKitIO/manager/MIDIManaged.hpp"
#include "MIDIKitIO/objects/MIDIEndpoints.hpp"

namespace midikit::io::internal {

/// What MIDIInputConnection and MIDIOutputConnection have alike: criteria for endpoints that come and go, and
/// a refresh that finds the endpoints of the moment.
///
/// Refreshes come from the notification thread, from eventQueue and from callers. One lock is held for the
/// whole of each; no block takes it, and it is given back before a port is disposed.
class MIDIManagedConnection : public MIDIManaged {
 public:
  /// What this connection leaves out: the program's own endpoints, if `owned`, and identities that equal one
  /// of the criteria.
  const MIDIEndpointFilter& filter() const { return settings_.filter; }

  /// A change of the setup, when the manager's lists are up to date. Errors end here.
  ///
  /// Thread-safe: yes.
  /// Realtime-safe: no, it locks and asks the service.
  void follow(const MIDIIORawNotification& change) noexcept;

  /// For the manager, once it hands changes on to this connection: takes up what has come since the
  /// connection was made, if it wants all of its kind.
  ///
  /// Thread-safe: yes.
  /// Realtime-safe: no, it locks and asks the service.
  void catchUp();

 protected:
  using References = std::set<MIDIObjectRef>;

  struct Settings {
    /// The kind of endpoint that is connected: outputs for what listens, inputs for what sends.
    MIDIEndpointType kind;
    /// None for all that are there and all that come.
    std::optional<MIDIEndpointIdentities> matching;
    MIDIEndpointFilter filter;
    CoreMIDIAPIVersion api;
  };
  MIDIManagedConnection(const std::shared_ptr<MIDIManager>& manager, Settings settings);

  /// @name The criteria
  /// Each change is followed by a refresh, whose errors end here: the next change of the setup tries again.
  /// @{
  MIDIEndpointIdentities criteria() const;
  void addCriteria(const MIDIEndpointIdentities& identities);
  void removeCriteria(const MIDIEndpointIdentities& identities);
  void removeAllCriteria();
  /// @}

  /// Guards the criteria and whatever a refresh writes.
  std::unique_lock<std::mutex> lock() const { return std::unique_lock(refreshing_); }

  /// Refreshes under the lock.
  /// @throws MIDIIOError as refresh()
  void refreshNow(MIDIManager& manager) {
    const auto locked = lock();
    refresh(manager, criteria_);
  }

  /// The references of the endpoints that the identities mean at this moment.
  References located(const MIDIManager& manager, const MIDIEndpointIdentities& identities) const;

  /// @name What the two have of their own, called under the lock
  /// @{
  /// Connects what the criteria mean at this moment.
  virtual void refresh(MIDIManager& manager, const MIDIEndpointIdentities& criteria) = 0;
  /// These are no longer wanted; a refresh follows.
  virtual void letGo(const References& /*endpoints*/) {}
  /// @}

 private:
  /// The unique IDs that the filter leaves out for being the program's own. Not under the lock: it may wait
  /// for an endpoint that is being made.
  std::set<std::int32_t> ownedIDs(const MIDIManager* manager) const;
  void update(MIDIEndpointIdentities criteria, const std::set<std::int32_t>& owned);
  /// `choice` picks from the present criteria.
  template <std::invocable<const MIDIEndpointIdentities&> Choice>
  void removeCriteria(const Choice& choice);
  /// The identity of what was added, if this connection wants all of its kind.
  MIDIEndpointIdentities joining(const MIDIIORawNotification& change) const;

  const Settings settings_;
  mutable std::mutex refreshing_;
  MIDIEndpointIdentities criteria_;
};

/// `[1, 2]`, in the order of the numbers.
std::string description(const std::set<MIDIObjectRef>& references);

/// The number, or "nil".
std::string description(const std::optional<MIDIObjectRef>& reference);

}  // namespace midikit::io::internal

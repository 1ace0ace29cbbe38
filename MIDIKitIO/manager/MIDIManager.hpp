#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "MIDIKitIO/manager/CoreMIDIAPIVersion.hpp"
#include "MIDIKitIO/manager/MIDIIONotification.hpp"
#include "MIDIKitIO/manager/MIDIIORawNotification.hpp"
#include "MIDIKitIO/manager/ManagedObjects.hpp"
#include "MIDIKitIO/manager/ManagedType.hpp"
#include "MIDIKitIO/objects/MIDIDevices.hpp"
#include "MIDIKitIO/objects/MIDIEndpoints.hpp"
#include "MIDIKitIO/objects/MIDIIOObjectCache.hpp"
#include "MIDIKitIO/platform/MIDIService.hpp"
#include "MIDIKitIO/receive/ReceiveContext.hpp"
#include "MIDIKitInternals/ThreadSafeAccess.hpp"
#include "foundation/run/Runtime.hpp"
#include "foundation/run/SerialQueue.hpp"

namespace midikit::io {

/// What a manager is made of.
struct MIDIManagerSettings {
  std::shared_ptr<MIDIService> service;
  /// Its main queue carries the notification handler. Must outlive the manager.
  karvex::foundation::Runtime& runtime;
  /// How the program is called towards the platform.
  std::string clientName;
  /// Written to each virtual endpoint that the manager makes.
  std::string model;
  std::string manufacturer;
};

/// The root of the layer: the program's connection to the platform's MIDI service, the current lists of
/// devices and endpoints, and every port, virtual endpoint and connection that the program makes.
///
/// Three kinds of threads come here. What changes the managed objects hops onto eventQueue and waits for it,
/// so start(), the add operations, remove() and removeAll() must not be called on that queue: receivers and
/// the handlers of a MIDIIdentifierPersistence run there. A change of the setup is worked up on the
/// platform's notification thread: the lists are up to date before the handler is queued on the main queue.
/// All other operations may be called on any thread and return copies of one moment; no handler, observer or
/// managed object is called under a lock.
///
/// When the manager goes, the managed objects go; the client stays until the process ends, and what the
/// platform still reports is ignored.
class MIDIManager : public std::enable_shared_from_this<MIDIManager> {
 public:
  /// Called after a change of the setup, on the main queue. The manager lives during the call. It must not
  /// throw.
  using NotificationHandler = std::function<void(const MIDIIONotification&, MIDIManager&)>;

  /// A manager without a client and with empty lists.
  static std::shared_ptr<MIDIManager> create(MIDIManagerSettings settings,
                                             NotificationHandler notificationHandler = nullptr);
  virtual ~MIDIManager() = default;
  MIDIManager(const MIDIManager&) = delete;
  MIDIManager& operator=(const MIDIManager&) = delete;

  /// Makes the client and fills the lists. Does nothing once it has succeeded; may be tried again.
  /// @throws MIDIIOError `osStatus`
  ///
  /// Thread-safe: yes, but not on eventQueue.
  /// Realtime-safe: no, it waits for eventQueue and asks the service.
  void start();

  /// Replaces the lists by those of this moment. On the calling thread.
  ///
  /// Thread-safe: yes.
  /// Realtime-safe: no, it asks the service and waits for an endpoint that is being made.
  virtual void refreshObjects();

  /// @name Making managed objects
  /// The object is in its map, in the place of one with the same tag, before it is made on the platform. If
  /// that fails, it stays there with nothing on the platform until it is replaced or removed.
  ///
  /// Thread-safe: yes, but not on eventQueue.
  /// Realtime-safe: no, they wait for eventQueue and ask the service.
  /// @{

  /// A virtual endpoint, with the unique ID that is kept for it if that one is free.
  /// @throws MIDIIOError `osStatus`; `connectionError` if the endpoint has no unique ID afterwards
  void addInput(const MIDIInputSettings& settings);
  void addOutput(const MIDIOutputSettings& settings);

  /// A connection with what is there of what is wanted. What isn't there is no error.
  /// @throws MIDIIOError `osStatus`
  void addInputConnection(const MIDIInputConnectionSettings& settings);
  void addOutputConnection(const MIDIOutputConnectionSettings& settings);

  /// A thru connection, which the manager holds only if it isn't persistent.
  /// @throws MIDIIOError `osStatus`; `notSupported` for a persistent one on the platforms 11 and 12
  void addThruConnection(const MIDIThruConnectionSettings& settings);
  /// @}

  /// Lets go of managed objects, which takes them off the platform at once, even if others hold them. A tag
  /// that isn't there is no error.
  ///
  /// Thread-safe: yes, but not on eventQueue.
  /// Realtime-safe: no, it waits for eventQueue and for lists that are being received.
  void remove(ManagedType type, const TagSelection& selection);
  /// The same for all managed objects, in the order of ManagedType.
  ///
  /// Thread-safe: yes, but not on eventQueue.
  /// Realtime-safe: no, it waits for eventQueue and for lists that are being received.
  void removeAll();

  /// The platform's persistent thru connections of that owner, those of earlier runs too.
  /// @throws MIDIIOError `osStatus`
  ///
  /// Thread-safe: yes.
  /// Realtime-safe: no, it asks the service.
  std::vector<MIDIObjectRef> persistentThruConnections(const std::string& ownerID) const;

  /// Ends them, and returns how many have gone. One that can't be ended doesn't stop the others.
  /// @throws MIDIIOError `osStatus` if they can't be found
  ///
  /// Thread-safe: yes.
  /// Realtime-safe: no, it asks the service.
  std::size_t disposePersistentThruConnections(const std::string& ownerID);

  const std::string& clientName() const { return settings_.clientName; }
  const std::string& model() const { return settings_.model; }
  const std::string& manufacturer() const { return settings_.manufacturer; }
  /// 0 until start() has succeeded.
  MIDIObjectRef coreMIDIClientRef() const;

  /// The interface that objects are made with from now on. On a platform that is too old for the newer one,
  /// the older one is stored whatever is set.
  CoreMIDIAPIVersion preferredAPI() const;
  void setPreferredAPI(CoreMIDIAPIVersion api);

  /// The lists as of the last refresh.
  MIDIDevices devices() const;
  MIDIEndpoints endpoints() const;

  /// @name The managed objects by their tags
  /// @{
  ManagedObjects::ByTag<MIDIInputConnection> managedInputConnections() const;
  ManagedObjects::ByTag<MIDIOutputConnection> managedOutputConnections() const;
  ManagedObjects::ByTag<MIDIInput> managedInputs() const;
  ManagedObjects::ByTag<MIDIOutput> managedOutputs() const;
  /// Non-persistent ones alone: the platform keeps the others.
  ManagedObjects::ByTag<MIDIThruConnection> managedThruConnections() const;
  /// @}

  /// Where those who ask for the program's own endpoints wait for one that is being made.
  const OwnershipGate& ownership() const { return managed_.ownership(); }
  /// The same, for the endpoints themselves.
  OwnershipGate& ownership() { return managed_.ownership(); }

  /// The unique IDs of the managed inputs or outputs that have one.
  ///
  /// Thread-safe: yes.
  /// Realtime-safe: no, it allocates and waits for an endpoint that is being made.
  std::set<std::int32_t> ownedUniqueIDs(MIDIEndpointType type) const;

  /// What is called after changes. It isn't called for a change that came in while there was none.
  NotificationHandler notificationHandler() const;
  void setNotificationHandler(NotificationHandler handler);

  /// The lists by which an object that was removed is named: those from before the last change that was none
  /// but a removal. None before the first such change.
  std::optional<MIDIIOObjectCache> notificationCache() const;

  const std::shared_ptr<MIDIService>& service() const { return settings_.service; }
  /// All changes of the managed objects, and what they receive. Its label names the client.
  const std::shared_ptr<karvex::foundation::SerialQueue>& eventQueue() const { return eventQueue_; }
  /// What receive handlers of this manager are made with.
  ReceiveContext receiveContext() const { return {settings_.runtime.clock(), eventQueue_}; }

 protected:
  /// A derived class calls adopt() when the object is in its shared pointer.
  explicit MIDIManager(MIDIManagerSettings settings);

  /// The last step of creation: what refers back to the manager is set.
  virtual void adopt();

  /// Runs `work` on eventQueue, and returns what it returns or throws what it throws.
  template <class Work>
  decltype(auto) onEventQueue(Work&& work) {
    return eventQueue_->runSynchronously(settings_.runtime, std::forward<Work>(work));
  }

  /// Numbers the walks over the platform's lists. Several threads may refresh at once, and a list must not be
  /// replaced by that of a walk which began earlier: it would remain until the next change.
  std::uint64_t beginWalk() { return ++walks_; }

 private:
  /// What several threads read and write.
  struct State {
    MIDIObjectRef clientRef = 0;
    CoreMIDIAPIVersion preferredAPI;
    MIDIDevices devices;
    std::uint64_t devicesWalk = 0;
    MIDIEndpoints endpoints;
    std::uint64_t endpointsWalk = 0;
    NotificationHandler notificationHandler;
    std::shared_ptr<const MIDIIOObjectCache> notificationCache;
  };

  template <class Map, class Settings>
  void addEndpoint(Map ManagedObjects::Maps::* map, const Settings& settings);
  void handle(const MIDINotification& message) noexcept;
  std::shared_ptr<const MIDIIOObjectCache> objects() const;
  void send(MIDIIONotification notification);

  const MIDIManagerSettings settings_;
  const std::shared_ptr<karvex::foundation::SerialQueue> eventQueue_;
  std::atomic<std::uint64_t> walks_ = 0;
  mutable internals::ThreadSafeAccess<State> state_;
  ManagedObjects managed_;
};

}  // namespace midikit::io

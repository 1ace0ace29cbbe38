#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "MIDIKitIO/manager/MIDIManager.hpp"
#include "foundation/Published.hpp"

namespace midikit::io {

/// A manager whose lists can be observed, for user interfaces.
///
/// Observers are called on the thread that refreshes the lists, which is the platform's notification thread
/// for a change of the setup, and always before the notification handler is queued. Observers of
/// refreshes on several threads at once may see an older list after a newer one; get() returns the newest.
class ObservableMIDIManager final : public MIDIManager {
 public:
  /// As MIDIManager's.
  using NotificationHandler = std::function<void(const MIDIIONotification&, ObservableMIDIManager&)>;

  /// A manager without a client and with empty lists.
  ///
  /// Thread-safe: yes.
  /// Realtime-safe: no, it allocates.
  static std::shared_ptr<ObservableMIDIManager> create(MIDIManagerSettings settings,
                                                       NotificationHandler notificationHandler = nullptr);

  /// The lists of the last refresh, by a walk of their own. To be written by refreshObjects() alone.
  karvex::foundation::Published<MIDIDevices> observableDevices;
  karvex::foundation::Published<MIDIEndpoints> observableEndpoints;

  /// Thread-safe: yes.
  /// Realtime-safe: no, it asks the service and calls the observers.
  void refreshObjects() override;

  /// Thread-safe: yes.
  /// Realtime-safe: no, it locks.
  void setNotificationHandler(NotificationHandler handler);

 private:
  using MIDIManager::MIDIManager;
  void adopt() override;

  std::uint64_t devicesWalk_ = 0;    ///< touched by changes of observableDevices alone
  std::uint64_t endpointsWalk_ = 0;  ///< touched by changes of observableEndpoints alone
};

}  // namespace midikit::io
